#include "requestCutter.h"

#include "hexText.h"

#include <gtest/gtest.h>

namespace {

// pymodbus 3.0's RTU framer
const char* const READ = "01 03 0B B8 00 01 06 0B";
const char* const READ_INPUT = "11 04 00 08 00 01 B2 98";
const char* const WRITE_WORDS = "01 10 00 0A 00 03 06 00 01 00 02 FF FF 5B 10";
const char* const IDENTIFICATION = "01 2B 0E 01 00 70 77";        // function 43
const char* const STATUS = "01 07 41 E2";                         // function 7
const char* const MASKED_WRITE = "01 16 00 04 00 F2 00 25 67 EE"; // function 22
const char* const WRITE_BITS = "02 0F 00 00 00 10 02 1F 80 FF 40";

void add(RequestCutter& cutter, const std::string& hex, std::int64_t at = 0)
{
    cutter.add(bytesOf(hex), at);
}

std::string taken(RequestCutter& cutter)
{
    const std::optional<Request> request = cutter.take();
    return request ? hexOf(request->bytes) : "none";
}

} // namespace

TEST(RequestCutter, TakesAWholeRequestOfEachFunction)
{
    const char* const rows[] = {
        // pymodbus 3.0's RTU framer
        "01 01 00 00 00 08 3D CC", "01 02 00 00 00 08 79 CC", READ,        READ_INPUT,
        "01 05 0B C9 FF 00 5E 20", "01 06 0B B9 04 D2 D8 96", WRITE_WORDS, WRITE_BITS,
    };
    for (const char* row : rows) {
        RequestCutter cutter;
        add(cutter, row);
        EXPECT_EQ(row, taken(cutter));
        EXPECT_EQ("none", taken(cutter));
        EXPECT_EQ(0, cutter.badFrames());
    }
}

TEST(RequestCutter, WaitsForTheRestOfARequest)
{
    const Bytes whole = bytesOf(WRITE_WORDS);
    RequestCutter cutter;
    for (std::size_t i = 0; i + 1 < whole.size(); ++i) {
        cutter.add({whole[i]}, 0);
        EXPECT_EQ("none", taken(cutter)) << i;
    }
    cutter.add({whole.back()}, 0);
    EXPECT_EQ(WRITE_WORDS, taken(cutter));
    EXPECT_EQ(0, cutter.badFrames());
}

TEST(RequestCutter, ReportsTimesOfFirstAndLastByte)
{
    RequestCutter cutter;
    add(cutter, "01 03 0B", 1000);
    add(cutter, "B8 00", 2000);
    add(cutter, "01 06 0B", 3000);
    const std::optional<Request> request = cutter.take();
    ASSERT_TRUE(request);
    EXPECT_EQ(1000, request->firstByteAt);
    EXPECT_EQ(3000, request->lastByteAt);
}

TEST(RequestCutter, SplitsRequestsReadTogether)
{
    RequestCutter cutter;
    add(cutter, std::string(READ) + " " + WRITE_WORDS + " 11 04", 1000);
    add(cutter, "00 08 00 01 B2 98", 2000);
    EXPECT_EQ(READ, taken(cutter));
    EXPECT_EQ(WRITE_WORDS, taken(cutter));
    const std::optional<Request> third = cutter.take();
    ASSERT_TRUE(third);
    EXPECT_EQ(READ_INPUT, hexOf(third->bytes));
    EXPECT_EQ(1000, third->firstByteAt);
    EXPECT_EQ(2000, third->lastByteAt);
}

TEST(RequestCutter, DropsGarbageAheadOfARequest)
{
    RequestCutter cutter;
    add(cutter, std::string("FF 99 7E ") + READ);
    EXPECT_EQ(READ, taken(cutter));
    EXPECT_EQ(1, cutter.badFrames());
}

TEST(RequestCutter, FindsARequestBehindAnyStrayByte)
{
    for (unsigned value = 0; value < 256; ++value) {
        RequestCutter cutter;
        cutter.add({static_cast<std::uint8_t>(value)}, 0);
        add(cutter, READ);
        std::string first = taken(cutter);
        if (first == "none") {
            cutter.lineFellSilent();
            first = taken(cutter);
        }
        EXPECT_EQ(READ, first) << value;
    }
}

TEST(RequestCutter, FindsARequestBehindABadChecksum)
{
    RequestCutter cutter;
    add(cutter, std::string("01 03 0B B8 00 01 06 0C ") + READ_INPUT);
    std::string first = taken(cutter);
    if (first == "none") {
        cutter.lineFellSilent();
        first = taken(cutter);
    }
    EXPECT_EQ(READ_INPUT, first);
    EXPECT_EQ(1, cutter.badFrames());
}

TEST(RequestCutter, SilenceEndsAPartialRequest)
{
    RequestCutter cutter;
    add(cutter, "01 03 0B B8 00");
    EXPECT_EQ("none", taken(cutter));
    cutter.lineFellSilent();
    EXPECT_EQ("none", taken(cutter));
    EXPECT_FALSE(cutter.holdsBytes());
    EXPECT_EQ(1, cutter.badFrames());
    add(cutter, READ);
    EXPECT_EQ(READ, taken(cutter));
    EXPECT_EQ(1, cutter.badFrames());
}

TEST(RequestCutter, UnknownFunctionEndsWithTheSilence)
{
    for (const char* row : {IDENTIFICATION, STATUS, MASKED_WRITE}) {
        RequestCutter cutter;
        add(cutter, row);
        EXPECT_EQ("none", taken(cutter));
        cutter.lineFellSilent();
        EXPECT_EQ(row, taken(cutter));
        EXPECT_EQ("none", taken(cutter));
        EXPECT_EQ(0, cutter.badFrames());
    }
}

TEST(RequestCutter, UnknownFunctionNeedsAGoodChecksum)
{
    RequestCutter cutter;
    std::string damaged = IDENTIFICATION;
    damaged[0] = '1';
    add(cutter, damaged);
    cutter.lineFellSilent();
    EXPECT_EQ("none", taken(cutter));
    EXPECT_EQ(1, cutter.badFrames());
}

TEST(RequestCutter, RequestBehindUnknownFunctionDoesNotWaitForSilence)
{
    RequestCutter cutter;
    add(cutter, std::string(IDENTIFICATION) + " " + READ);
    EXPECT_EQ(READ, taken(cutter));
    EXPECT_EQ(1, cutter.badFrames());
}

TEST(RequestCutter, EndlessNoiseWithoutSilenceIsDropped)
{
    RequestCutter cutter;
    for (int i = 0; i < 1000; ++i)
        cutter.add({0x55}, 0);
    EXPECT_EQ("none", taken(cutter));
    EXPECT_EQ(1, cutter.badFrames());
    add(cutter, READ);
    EXPECT_EQ(READ, taken(cutter));
}

TEST(RequestCutter, SilenceFreesARequestBehindAFalseLongHeader)
{
    RequestCutter cutter;
    add(cutter, std::string("01 10 00 00 00 64 C8 ") + READ); // promises 200 more bytes
    EXPECT_EQ("none", taken(cutter));
    cutter.lineFellSilent();
    EXPECT_EQ(READ, taken(cutter));
    EXPECT_EQ("none", taken(cutter));
}

TEST(RequestCutter, EachRunOfBadBytesCountsOnce)
{
    RequestCutter cutter;
    for (int run = 0; run < 3; ++run) {
        add(cutter, std::string("FF FF FF ") + READ);
        EXPECT_EQ(READ, taken(cutter));
    }
    EXPECT_EQ(3, cutter.badFrames());
}

TEST(RequestCutter, ResetDropsHeldBytes)
{
    RequestCutter cutter;
    add(cutter, "01 10 00 00 00 64 C8");
    cutter.reset();
    add(cutter, READ);
    EXPECT_EQ(READ, taken(cutter));
    EXPECT_EQ(0, cutter.badFrames());
}
