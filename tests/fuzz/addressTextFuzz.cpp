// Address texts and area names through the calls of the host's editor, and back from number to
// text.

#include "frameRules.h"
#include "fuzzHost.h"
#include "fuzzInput.h"

#include <QStringList>

#include <string>

namespace {

enum { MOST_TEXT = 16, MOST_UNITS = 300, BIT_VARIABLE = -1, WORD_VARIABLE = 2, UNTOUCHED = -77 };

struct Range
{
    int lowest;
    int highest;
};

/// As the header's table has them.
Range rangeOf(const QString& area)
{
    if (area == QLatin1String("MW")) return {3000, 7095};
    if (area == QLatin1String("MX")) return {3000, 65535};
    return isWordName(area) ? Range{0, 255} : Range{0, 4095};
}

bool isKnown(const QString& area)
{
    const QString names = QLatin1String(" MW IW QW MX IX QX ");
    return area.size() == 2 && names.contains(QLatin1Char(' ') + area + QLatin1Char(' '));
}

QString anyAddressText(FuzzInput& input)
{
    if (input.yes()) return input.anyText(MOST_TEXT);
    QString text = QString::number(input.yes() ? input.number(-2, 8200) : input.anyNumber());
    if (input.yes()) text += QLatin1Char('.') + QString::number(input.number(-1, 9));
    return text;
}

/// The text of one address number, by a series of one.
QString textOf(const QString& area, int number)
{
    QVector<QString> texts;
    QVector<int> numbers;
    require(intf_multiCopy(area, number, 1, 0, texts, numbers) == SERIES_COMPLETE,
            "a valid address has a text");
    require(texts.size() == 1 && numbers.size() == 1 && numbers.at(0) == number,
            "a series of one is its start");
    return texts.at(0);
}

void requireValid(const QString& area, int number, int count)
{
    const Range range = rangeOf(area);
    require(number >= range.lowest && number <= range.highest, "a valid address is in its area");
    if (count > 0)
        require(qint64(number) + count - 1 <= range.highest, "a valid variable ends in its area");
    int again = UNTOUCHED;
    const int dataType = isWordName(area) ? int(WORD_VARIABLE) : int(BIT_VARIABLE);
    require(intf_checkAddr(area, textOf(area, number), again, dataType, 1, 0) == ADDRESS_VALID &&
                again == number,
            "the text of a valid number names that number");
}

void requireKnownResult(int result, const QString& area, int number, int count)
{
    require((result >= 0 && result <= 3) || result == ADDRESS_READ_ONLY, "a result is documented");
    if (isKnown(area)) {
        require(result != ADDRESS_UNKNOWN_AREA, "a known area is known");
        return;
    }
    const bool outOfRange = number < 0 || qint64(number) + count > 1;
    require(result == (outOfRange ? ADDRESS_OUT_OF_RANGE : ADDRESS_UNKNOWN_AREA),
            "an unknown area is missed");
}

void check(FuzzInput& input, const QString& area, const QString& text)
{
    const int start = input.number(-2, 2);
    const int count = input.yes() ? input.number(-2, 9000) : input.anyNumber();
    const int dataType = input.number(-2, 10);
    const int access = input.number(-1, 3);
    int number = start;
    const int result = intf_checkAddr(area, text, number, dataType, count, access);
    requireKnownResult(result, area, start, count);
    const bool readOnly = area == QLatin1String("IW") || area == QLatin1String("IX");
    if (result == ADDRESS_READ_ONLY)
        require(readOnly && (access == 1 || access == 2), "only inputs are read-only");

    int validNumber = start;
    const int isWord = dataType == BIT_VARIABLE ? 0 : input.number(1, 5);
    const int valid = intf_checkAddrValidity(area, text, validNumber, count, isWord);
    requireKnownResult(valid, area, start, count);
    if (result != ADDRESS_READ_ONLY)
        require(valid == result && validNumber == number, "both checks agree");
    if (valid == ADDRESS_VALID && isKnown(area) && count >= 0)
        requireValid(area, validNumber, count);
}

void describe(FuzzInput& input, const QString& area)
{
    QStringList out;
    require(intf_getRegDiscription(area, out) == 0, "describing returns 0");
    require(out.size() == (isKnown(area) ? 5 : 0), "a known area has five texts");
    if (isKnown(area)) {
        int number = UNTOUCHED;
        const int isWord = isWordName(area) ? 1 : 0;
        require(intf_checkAddrValidity(area, out.at(1), number, 1, isWord) == ADDRESS_VALID &&
                    number == rangeOf(area).lowest,
                "the lowest address is valid");
        require(intf_checkAddrValidity(area, out.at(2), number, 1, isWord) == ADDRESS_VALID &&
                    number == rangeOf(area).highest,
                "the highest address is valid");
    }
    const int kind = input.number(-1, 2);
    require(intf_getRegListByType(kind, out) == (kind == 0 || kind == 1 ? 1 : 0),
            "two kinds of areas are known");
    require(out.size() == (isKnown(area) ? 8 : 3), "each kind has three areas");
}

void copy(FuzzInput& input, const QString& area)
{
    QVector<QString> texts;
    QVector<int> numbers;
    const int start = input.addressNumber();
    const int count = input.count(MOST_UNITS);
    const int interval = input.yes() ? input.number(-40, 40) : input.anyNumber();
    const int result = intf_multiCopy(area, start, count, interval, texts, numbers);
    require(texts.size() == numbers.size(), "each address has a text and a number");
    if (!isKnown(area)) {
        require(result == SERIES_UNKNOWN_AREA && texts.isEmpty(), "an unknown area has no series");
        return;
    }
    require(result == SERIES_COMPLETE || result == SERIES_CLIPPED, "a result is documented");
    require(texts.size() == qMax(count, 0), "a series has the length that was asked for");
    bool clipped = false;
    for (int i = 0; i < int(numbers.size()); ++i) {
        const int wanted = int(quint32(start) + quint32(i) * quint32(interval));
        const bool past = wanted > rangeOf(area).highest;
        clipped = clipped || past;
        require(numbers.at(i) == (past ? rangeOf(area).highest : wanted),
                "a series keeps its steps");
    }
    require((result == SERIES_CLIPPED) == clipped, "a series tells that it was clipped");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput input(data, size);
    FuzzHost host;
    host.initialise(0, 3, 32);
    while (input.isLeft()) {
        const QString area = input.areaName();
        check(input, area, anyAddressText(input));
        describe(input, area);
        copy(input, area);
        const int count = input.count(MOST_UNITS);
        const QByteArray values = host.read(input.station(), area, input.addressNumber(), count);
        require(values.count('\0') == values.size(), "a unit never read is 0");
    }
    require(driver.frameQueue.isEmpty() && driver.writeList.isEmpty(), "looking asks for nothing");
    return 0;
}
