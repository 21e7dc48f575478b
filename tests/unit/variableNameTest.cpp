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

// The area stands before the first underscore, the suffix behind it. A name with "_bit" anywhere,
// in lower case, is that of a bit of a unit.
TEST(VariableNames, HaveAnAreaASuffixAndNameABitOfAUnit)
{
    for (const NAME_CASE& row : NAMES) {
        SCOPED_TRACE(row.name);
        const QString name = QString::fromLatin1(row.name);
        EXPECT_EQ(row.area, areaPart(name).toStdString());
        EXPECT_EQ(row.suffix, suffixPart(name).toStdString());
        EXPECT_EQ(row.isBit, namesBitOfUnit(name));
    }
}
