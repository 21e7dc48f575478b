#include "registerDescription.h"

#include "driverFixture.h"
#include "listTexts.h"

namespace {

QStringList described(const char* dataWidth, const char* access)
{
    const QString row[AREA_COLUMN_COUNT] = {text("HHHH"),    text("lowest"), text("highest"),
                                            text(dataWidth), text(access),   text("16")};
    QStringList out;
    describeRow(row, out);
    return out;
}

struct CODED
{
    const char* column;
    const char* code;
};

} // namespace

class RegisterDescription : public DriverTest
{
};

TEST_F(RegisterDescription, EachAreaAppendsItsFormatRangeWidthAndAccess)
{
    struct
    {
        const char* area;
        Texts description;
    } const rows[] = {
        {"MW", {"DDDD", "0", "8190", "1", "1"}},     {"IW", {"DDDD", "0", "510", "1", "0"}},
        {"QW", {"DDDD", "0", "510", "1", "1"}},      {"MX", {"DDDDO", "0.0", "7816.7", "0", "1"}},
        {"IX", {"DDDDO", "0.0", "511.7", "0", "0"}}, {"QX", {"DDDDO", "0.0", "511.7", "0", "1"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.area);
        QStringList out;
        out.append(text("before"));
        EXPECT_EQ(0, intf_getRegDiscription(text(row.area), out));
        ASSERT_EQ("before", out.takeFirst().toStdString());
        EXPECT_EQ(row.description, textsOf(out));
    }
}

TEST_F(RegisterDescription, AnUnknownAreaAppendsNothingAndStillReturnsZero)
{
    for (const char* name : {"ZZ", "mw", "", "MX_bit"}) {
        SCOPED_TRACE(name);
        QStringList out;
        out.append(text("before"));
        EXPECT_EQ(0, intf_getRegDiscription(text(name), out));
        EXPECT_EQ(Texts{"before"}, textsOf(out));
    }
}

TEST_F(RegisterDescription, FormatAndLimitsAreTakenAsTheyStand)
{
    EXPECT_EQ((Texts{"HHHH", "lowest", "highest", "1", "1"}), textsOf(described("16", "RW")));
}

TEST_F(RegisterDescription, WidthsAreCodedAsBitWordAndDoubleWord)
{
    const CODED rows[] = {{"1", "0"},  {"8", "1"}, {"16", "1"}, {"32", "2"},
                          {"64", "1"}, {"", "1"},  {"x", "1"}};
    for (const CODED& row : rows) {
        SCOPED_TRACE(row.column);
        EXPECT_EQ(row.code, described(row.column, "RW").at(3).toStdString());
    }
}

TEST_F(RegisterDescription, AccessIsCodedAsReadBothAndWrite)
{
    const CODED rows[] = {{"R", "0"}, {"RW", "1"}, {"W", "2"}, {"", "1"}, {"r", "1"}};
    for (const CODED& row : rows) {
        SCOPED_TRACE(row.column);
        EXPECT_EQ(row.code, described("16", row.column).at(4).toStdString());
    }
}

TEST_F(RegisterDescription, KindZeroAppendsTheBitAreasAndAnyOtherKindTheWordAreas)
{
    struct
    {
        int kind;
        int result;
        Texts areas;
    } const rows[] = {
        {0, 1, {"before", "MX", "IX", "QX"}},  {1, 1, {"before", "MW", "IW", "QW"}},
        {5, 0, {"before", "MW", "IW", "QW"}},  {2, 0, {"before", "MW", "IW", "QW"}},
        {-1, 0, {"before", "MW", "IW", "QW"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.kind);
        QStringList out;
        out.append(text("before"));
        EXPECT_EQ(row.result, intf_getRegListByType(row.kind, out));
        EXPECT_EQ(row.areas, textsOf(out));
    }
}
