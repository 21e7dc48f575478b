#include "driver/addressText.h"

QString addressText(const DriverLibrary& driver, const QString& area, int number)
{
    QVector<QString> texts;
    QVector<int> numbers;
    driver.multiCopy(area, number, 1, 1, texts, numbers);
    return texts.value(0);
}

int addressNumber(const DriverLibrary& driver, const QString& area, const QString& address)
{
    int number = 0;
    driver.checkAddr(area, address, number,
                     area.endsWith(QLatin1Char('X')) ? BIT_VARIABLE : WORD_VARIABLE, 1,
                     FOR_READING);
    return number;
}
