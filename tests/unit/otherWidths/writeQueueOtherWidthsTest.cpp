#include "cacheHelpers.h"
#include "writeRequest.h"

namespace {

struct WIDTH_CASE
{
    const char* dataWidth;
    const char* unitBits;
    int count;
    std::vector<Bytes> entries; ///< value bytes of each, one per unit address
};

/// The bytes that the cases take their values from; guarded by nothing but their own number.
const unsigned char VALUES[] = {1, 2, 3, 4, 5, 6, 7, 8};
enum { LONGEST_VALUE = 4 };

class WriteQueueOtherWidths : public DriverTest, public testing::WithParamInterface<WIDTH_CASE>
{
};

void PrintTo(const WIDTH_CASE& tested, std::ostream* out)
{
    *out << "width " << tested.dataWidth << " unit " << tested.unitBits << " count "
         << tested.count;
}

} // namespace

TEST_P(WriteQueueOtherWidths, AnEntryTakesOneUnit)
{
    const WIDTH_CASE& tested = GetParam();
    queueWritesOfArea(OtherRow(tested.dataWidth, tested.unitBits), 3, text("VW"), 100, tested.count,
                      VALUES, 9);
    ASSERT_EQ(tested.entries.size(), size_t(driver.writeList.size()));
    for (size_t i = 0; i < tested.entries.size(); ++i) {
        SCOPED_TRACE(i);
        const VARIABLE& var = driver.writeList.at(int(i));
        EXPECT_EQ(9, var.varId);
        EXPECT_EQ(3, var.station);
        EXPECT_EQ("VW", var.regName.toStdString());
        EXPECT_EQ(100 + int(i), var.addr);
        EXPECT_EQ(1, var.count);
        Bytes padded = tested.entries[i];
        padded.resize(LONGEST_VALUE, 0);
        EXPECT_EQ(padded, Bytes(var.value, var.value + LONGEST_VALUE));
    }
}

// Entries are 16 / unit bits to an element, whatever the element's own width.
INSTANTIATE_TEST_SUITE_P(
    Widths, WriteQueueOtherWidths,
    testing::Values(
        WIDTH_CASE{"16", "16", 2, {{1, 2}, {3, 4}}}, WIDTH_CASE{"16", "8", 2, {{1}, {2}, {3}, {4}}},
        WIDTH_CASE{"8", "8", 2, {{1}, {2}, {3}, {4}}}, WIDTH_CASE{"8", "16", 2, {{1, 2}, {3, 4}}},
        WIDTH_CASE{"32", "16", 2, {{1, 2}, {3, 4}}},
        WIDTH_CASE{"32", "32", 4, {{1, 2, 3, 4}, {5, 6, 7, 8}}},
        WIDTH_CASE{"32", "32", 3, {{1, 2, 3, 4}}}, WIDTH_CASE{"32", "32", 1, {}},
        WIDTH_CASE{"32", "32", 0, {}}, WIDTH_CASE{"32", "32", -4, {}},
        WIDTH_CASE{"32", "8", 1, {{1}, {2}}}, WIDTH_CASE{"16", "4", 1, {{}, {}, {}, {}}},
        WIDTH_CASE{"16", "12", 3, {{1}, {2}, {3}, {4}}}, WIDTH_CASE{"1", "1", 3, {{1}, {2}, {3}}},
        WIDTH_CASE{"1", "8", 3, {{1}, {2}, {3}}}, WIDTH_CASE{"1", "16", 3, {{1}, {2}, {3}}},
        WIDTH_CASE{"1", "16", -1, {}}, WIDTH_CASE{"16", "", 2, {}}, WIDTH_CASE{"16", "0", 2, {}},
        WIDTH_CASE{"16", "-16", 2, {}}, WIDTH_CASE{"", "", 2, {}}));
