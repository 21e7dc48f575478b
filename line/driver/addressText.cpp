#include "driver/addressText.h"

QString addressText(const DriverLibrary& driver, const QString& area, int number)
{
    QVector<QString> texts;
    QVector<int> numbers;
    driver.multiCopy(area, number, 1, 1, texts, numbers);
    return texts.value(0);
}
