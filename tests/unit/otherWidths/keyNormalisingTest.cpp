#include "otherWidths/keyNormalising.h"

#include "cacheHelpers.h"
#include "listTexts.h"

namespace {

struct KeyRow
{
    const char* dataWidth;
    const char* unitBits;
    const char* given;
    const char* normalised;
};

const KeyRow ROWS[] = {
    // Counts of bits and words stay.
    {"1", "1", "1 MX 3005 x7", "1 MX 3005 x7"},
    {"16", "16", "1 MW 3005 x7", "1 MW 3005 x7"},
    // Counts of 8-bit elements double, 8 elements of 2 bits make a word.
    {"8", "8", "1 MB 5 x7", "1 MB 5 x14"},
    {"2", "2", "1 V 5 x7", "1 V 5 x56"},
    // Counts of 32-bit elements are halved towards zero.
    {"32", "32", "1 MD 5 x7", "1 MD 5 x3"},
    {"32", "32", "1 MD 5 x-7", "1 MD 5 x-3"},
    // An area without a width leaves the count.
    {"", "", "1 MX 5 x7", "1 MX 5 x7"},
    {"0", "0", "1 MX 5 x7", "1 MX 5 x7"},
    // Bits of words become the words that hold them.
    {"16", "16", "1 MW_BIT 35 x5", "1 MW_BIT 2 x1"},
    {"16", "16", "1 MW_BIT 32 x16", "1 MW_BIT 2 x1"},
    {"16", "16", "1 MW_BIT 32 x17", "1 MW_BIT 2 x2"},
    {"16", "16", "1 MW_BIT 33 x16", "1 MW_BIT 2 x2"},
    {"16", "16", "1 MW_BIT 31 x16", "1 MW_BIT 1 x2"},
    {"16", "16", "1 MW_BIT 0 x0", "1 MW_BIT 0 x0"},
    // Bits of bytes are rounded up by the low four bits of the count: 8 bits fill one byte, and the
    // 8 left in the low four bits still add one.
    {"16", "8", "1 MW_BIT 0 x8", "1 MW_BIT 0 x2"},
    {"16", "8", "1 MW_BIT 0 x16", "1 MW_BIT 0 x2"},
    {"16", "8", "1 MW_BIT 11 x16", "1 MW_BIT 1 x3"},
    // Bits in units of one bit stand for themselves and one more, unless they fill words.
    {"1", "1", "1 V_BIT 35 x5", "1 V_BIT 35 x6"},
    {"1", "1", "1 V_BIT 35 x16", "1 V_BIT 35 x16"},
    // Bits of an area without units stay.
    {"16", "", "1 MW_BIT 35 x5", "1 MW_BIT 35 x5"},
    {"16", "0", "1 MW_BIT 35 x5", "1 MW_BIT 35 x5"},
    // Suffixes of a width are cut off, others stay.
    {"16", "16", "1 MW_B 35 x5", "1 MW 35 x5"},
    {"16", "16", "1 MW_W 35 x5", "1 MW 35 x5"},
    {"16", "16", "1 MW_D 35 x5", "1 MW 35 x5"},
    {"16", "16", "1 MW_bit 35 x5", "1 MW_bit 35 x5"},
    {"16", "16", "1 MW_X 35 x5", "1 MW_X 35 x5"},
    {"16", "16", "1 MW_BITS 35 x5", "1 MW_BITS 35 x5"},
    {"16", "16", "1 MW_b 35 x5", "1 MW_b 35 x5"},
};

} // namespace

class KeyNormalising : public DriverTest
{
};

TEST_F(KeyNormalising, CountsBecomeUnitsAndNamesTheirArea)
{
    for (const KeyRow& row : ROWS) {
        SCOPED_TRACE(testing::Message()
                     << row.given << " in " << row.dataWidth << "/" << row.unitBits);
        KEY_ADDRESS given = keysOf(row.given).at(0);
        normaliseKey(OtherRow(row.dataWidth, row.unitBits), given);
        EXPECT_EQ(row.normalised, blockText(given));
    }
}
