#include "variableName.h"

#include <gtest/gtest.h>

namespace {

struct NAME_CASE
{
    const char* name;
    const char* area;
    const char* suffix;
    bool isBit;
};

const NAME_CASE NAMES[] = {
    {"MW", "MW", "", false},
    {"MW_bit", "MW", "bit", true},
    {"MW_B", "MW", "B", false},
    {"MW_", "MW", "", false},
    {"_bit", "", "bit", true},
    {"", "", "", false},
    {"_", "", "", false},
    {"MW_D_bit", "MW", "D_bit", true},
    {"MW_bits_x", "MW", "bits_x", true},
    {"MW__bit", "MW", "_bit", true},
    {"MWbit", "MWbit", "", false},
    {"MW_BIT", "MW", "BIT", false},
    {"bit_MW", "bit", "MW", false},
};

} // namespace

TEST(VariableNames, TheAreaStandsBeforeTheFirstUnderscore)
{
    for (const NAME_CASE& row : NAMES)
        EXPECT_EQ(row.area, areaPart(QString::fromLatin1(row.name)).toStdString()) << row.name;
}

TEST(VariableNames, TheSuffixStandsBehindTheFirstUnderscore)
{
    for (const NAME_CASE& row : NAMES)
        EXPECT_EQ(row.suffix, suffixPart(QString::fromLatin1(row.name)).toStdString()) << row.name;
}

TEST(VariableNames, ANameWithLowerCaseBitSuffixAnywhereIsABitOfAUnit)
{
    for (const NAME_CASE& row : NAMES)
        EXPECT_EQ(row.isBit, namesBitOfUnit(QString::fromLatin1(row.name))) << row.name;
}
