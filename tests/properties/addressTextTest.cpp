// Address texts and address numbers.

#include "deviceAreas.h"
#include "figures.h"
#include "quorvane_ka_kb_plc.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <QStringList>

namespace {

enum { BIT_VARIABLE = -1, WORD_VARIABLE = 0, READ_ONLY_USE = 0, UNTOUCHED = -77 };

struct CheckedText
{
    int result;
    int number;
};

CheckedText checked(const DeviceArea& area, const QString& text, int count)
{
    CheckedText out = {-1, UNTOUCHED};
    out.result = intf_checkAddr(nameOf(area), text, out.number,
                                area.bits ? BIT_VARIABLE : WORD_VARIABLE, count, READ_ONLY_USE);
    return out;
}

CheckedText validity(const DeviceArea& area, const QString& text, int count)
{
    CheckedText out = {-1, UNTOUCHED};
    out.result = intf_checkAddrValidity(nameOf(area), text, out.number, count, area.bits ? 0 : 1);
    return out;
}

rc::Gen<std::string> textOf(const char* alphabet)
{
    return rc::gen::container<std::string>(rc::gen::elementOf(std::string(alphabet)));
}

rc::Gen<std::string> numberText()
{
    return rc::gen::map(rc::gen::arbitrary<int>(), [](int n) { return std::to_string(n); });
}

rc::Gen<std::string> typedText(const rc::Gen<int>& byte)
{
    const auto bit = rc::gen::inRange(-1, 10);
    const auto dotted = rc::gen::arbitrary<bool>();
    return rc::gen::resize(
        rc::kNominalSize,
        rc::gen::map(rc::gen::tuple(byte, bit, dotted), [](const std::tuple<int, int, bool>& part) {
            const std::string text = std::to_string(std::get<0>(part));
            return std::get<2>(part) ? text + "." + std::to_string(std::get<1>(part)) : text;
        }));
}

/// Where a wrong limit shows, and where byte x 8 wraps around.
rc::Gen<int> byteNearAnEnd()
{
    return rc::gen::element(-1, 0, 509, 510, 511, 512, 7816, 7817, 8189, 8190, 8191, 8192,
                            536870911, 536870912, 2147483647);
}

rc::Gen<std::string> anyText()
{
    return rc::gen::oneOf(textOf("0123456789."), textOf("0123456789.-+ ax"),
                          rc::gen::arbitrary<std::string>(), numberText(),
                          typedText(byteNearAnEnd()), typedText(rc::gen::inRange(0, 8300)));
}

/// True when all units of a variable that was found valid lie in the area.
bool liesInside(const DeviceArea& area, const CheckedText& found, int count)
{
    return found.number >= area.lowest && found.number + (count - 1) <= area.highest;
}

} // namespace

TEST(EveryAddress, OfEveryAreaSurvivesTextAndNumber)
{
    for (const DeviceArea& area : deviceAreas()) {
        for (int number = area.lowest; number <= area.highest; ++number) {
            QVector<QString> texts;
            QVector<int> numbers;
            ASSERT_EQ(SERIES_COMPLETE, intf_multiCopy(nameOf(area), number, 1, 1, texts, numbers));
            ASSERT_EQ(typedAddress(area, number), texts.at(0).toStdString()) << area.name;
            ASSERT_EQ(number, numbers.at(0)) << area.name;
            const CheckedText found = checked(area, texts.at(0), 1);
            ASSERT_EQ(ADDRESS_VALID, found.result) << area.name << texts.at(0).toStdString();
            ASSERT_EQ(number, found.number) << area.name << texts.at(0).toStdString();
            tally("addresses");
        }
    }
}

TEST(EveryAddress, OfAnAreaStandsOnceInASeriesOverAllOfIt)
{
    for (const DeviceArea& area : deviceAreas()) {
        const int units = area.highest - area.lowest + 1;
        QVector<QString> texts;
        QVector<int> numbers;
        ASSERT_EQ(SERIES_COMPLETE,
                  intf_multiCopy(nameOf(area), area.lowest, units, 1, texts, numbers));
        ASSERT_EQ(units, int(texts.size()));
        tally("addresses", units);
        for (int i = 0; i < units; ++i) {
            ASSERT_EQ(area.lowest + i, numbers.at(i)) << area.name;
            ASSERT_EQ(area.lowest + i, validity(area, texts.at(i), 1).number) << area.name;
        }
    }
}

TEST(EveryAddress, IsTheLastThatAVariableUpToTheEndMayStartAt)
{
    for (const DeviceArea& area : deviceAreas()) {
        for (int number = area.lowest; number <= area.highest; ++number) {
            const QString text = QString::fromStdString(typedAddress(area, number));
            const int count = area.highest - number + 1;
            ASSERT_EQ(ADDRESS_VALID, checked(area, text, count).result) << area.name << number;
            ASSERT_EQ(ADDRESS_OUT_OF_RANGE, checked(area, text, count + 1).result)
                << area.name << number;
            tally("addresses");
        }
    }
}

RC_GTEST_PROP(AnyText, IsValidOnlyWithANumberInsideTheArea, ())
{
    countCase();
    const std::string typed = *anyText();
    const int count = *rc::gen::inRange(1, 200);
    for (const DeviceArea& area : deviceAreas()) {
        const QString text = QString::fromStdString(typed);
        const CheckedText found = checked(area, text, count);
        const CheckedText again = validity(area, text, count);
        tally("valid in an area", found.result == ADDRESS_VALID);
        tally("refused by one", found.result != ADDRESS_VALID);
        RC_ASSERT(found.result == again.result);
        RC_ASSERT(found.number == again.number);
        if (found.result == ADDRESS_VALID) RC_ASSERT(liesInside(area, found, count));
    }
}

RC_GTEST_PROP(AnySeries, HoldsOnlyNumbersThatTheirTextsStandFor, ())
{
    countCase();
    const DeviceArea area = deviceAreas()[*rc::gen::inRange<size_t>(0, deviceAreas().size())];
    const int start = area.lowest + *rc::gen::inRange(0, area.highest - area.lowest + 1);
    const int count = *rc::gen::inRange(0, 50);
    const int interval = *rc::gen::inRange(0, 2000);
    QVector<QString> texts;
    QVector<int> numbers;
    const int result = intf_multiCopy(nameOf(area), start, count, interval, texts, numbers);
    RC_ASSERT(int(texts.size()) == count);
    RC_ASSERT(int(numbers.size()) == count);
    for (int i = 0; i < count; ++i) {
        RC_ASSERT(numbers.at(i) == qMin(start + i * interval, area.highest));
        RC_ASSERT(texts.at(i).toStdString() == typedAddress(area, numbers.at(i)));
    }
    const bool clipped = count > 0 && start + (count - 1) * interval > area.highest;
    tally("clipped", clipped);
    tally("addresses", count);
    RC_ASSERT(result == (clipped ? SERIES_CLIPPED : SERIES_COMPLETE));
}
