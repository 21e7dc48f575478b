// Areas of widths that this device's own table does not have.

#include "addressChecks.h"

#include "driverFixture.h"

namespace {

enum { BIT_TYPE = -1, WIDE_TYPE = 3, OTHER_TYPE = 2, READING = 0, WRITING = 1 };

/// Result code for an address of an area from 0 to 510, and the address.
int check(const char* width, const char* access, const char* addrText, int dataType, int count,
          int accessMode, int& addr)
{
    const QString row[AREA_COLUMN_COUNT] = {text("DDDD"), text("0"),    text("510"),
                                            text(width),  text(access), text(width)};
    const ADDRESS_QUESTION question = {text("DW"), text(addrText), dataType, count, accessMode};
    return checkAddressOfArea(row, question, addr);
}

struct CheckRow
{
    const char* width;
    const char* access;
    const char* addrText;
    std::vector<int> dataTypes;
    int count;
    int accessMode;
    int code;
};

const CheckRow ROWS[] = {
    // A 32-bit area takes five data types, and is no bit area.
    {"32", "RW", "0", {1, 3, 5, 6, 9}, 1, READING, ADDRESS_VALID},
    {"32", "RW", "0", {0, 2, 4, 7, 8, 10, -2}, 1, READING, ADDRESS_TYPE_NOT_ALLOWED},
    {"32", "RW", "0", {BIT_TYPE}, 1, READING, ADDRESS_KIND_MISMATCH},
    // Access is tested before the data type, and the text after it.
    {"32", "R", "0", {OTHER_TYPE}, 1, WRITING, ADDRESS_READ_ONLY},
    {"32", "R", "malformed", {OTHER_TYPE}, 1, READING, ADDRESS_TYPE_NOT_ALLOWED},
    {"32", "R", "malformed", {WIDE_TYPE}, 1, READING, ADDRESS_OUT_OF_RANGE},
    // Two 32-bit elements count as one step, and a half step is not rounded off: 255 + 2 / 2 ends
    // at 256, one past the last address; 255 + 3 / 2 passes it by a half.
    {"32", "RW", "510", {WIDE_TYPE}, 2, READING, ADDRESS_VALID},
    {"32", "RW", "510", {WIDE_TYPE}, 3, READING, ADDRESS_OUT_OF_RANGE},
    // An 8-bit element counts as two steps.
    {"8", "RW", "510", {OTHER_TYPE}, 1, READING, ADDRESS_OUT_OF_RANGE},
    {"8", "RW", "508", {OTHER_TYPE}, 1, READING, ADDRESS_VALID},
    {"8", "RW", "506", {OTHER_TYPE}, 2, READING, ADDRESS_OUT_OF_RANGE},
    {"8", "RW", "504", {OTHER_TYPE}, 2, READING, ADDRESS_VALID},
    // An 8-bit area takes any data type but the bit.
    {"8", "RW", "0", {0, 8}, 1, READING, ADDRESS_VALID},
    {"8", "RW", "0", {BIT_TYPE}, 1, READING, ADDRESS_KIND_MISMATCH},
};

} // namespace

class AddressWidths : public DriverTest
{
};

TEST_F(AddressWidths, AreCheckedByTheirOwnTypesAndSteps)
{
    for (const CheckRow& row : ROWS) {
        for (int dataType : row.dataTypes) {
            SCOPED_TRACE(testing::Message() << row.width << " bits at " << row.addrText << ", type "
                                            << dataType << " x" << row.count);
            int addr = 0;
            EXPECT_EQ(row.code, check(row.width, row.access, row.addrText, dataType, row.count,
                                      row.accessMode, addr));
        }
    }
}

TEST_F(AddressWidths, AValidAddressIsHandedBack)
{
    int addr = -77;
    ASSERT_EQ(ADDRESS_VALID, check("32", "RW", "20", WIDE_TYPE, 1, READING, addr));
    EXPECT_EQ(10, addr);
}
