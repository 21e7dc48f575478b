#include "cacheHelpers.h"
#include "replyDecoding.h"

namespace {

/// A unit V 8 of station 1 with read value 0, a pending write of 0x22, and a reply.
class PendingWriteDecoding : public DriverTest
{
protected:
    PendingWriteDecoding() : index(putPendingWrite(1, "V", 8, 0, 0x22)) {}

    /// Whether the write still stands after a reply that is all `byte`.
    int pendingAfter(const char* unitBits, int byte)
    {
        const int start = *unitBits == '1' && unitBits[1] == '\0' ? 0 : 8;
        const int count = start == 0 ? 9 : 1;
        decodeReplyOfArea(OtherRow("", unitBits), bytes({1, 3, 4, byte, byte, byte, byte}), count,
                          3, variable(1, "V", start, count));
        return driver.dataAreas.at(index).writePending;
    }

    void queueSomeWrite()
    {
        driver.writeList.append(variable(9, "QX", 0, 1));
    }

    int index;
};

const char* const ALL_WIDTHS[] = {"1", "8", "16", "32"};
const char* const WIDE[] = {"8", "16", "32"};

} // namespace

TEST_F(PendingWriteDecoding, AnUnchangedValueKeepsAPendingWrite)
{
    for (const char* unitBits : ALL_WIDTHS) {
        EXPECT_EQ(1, pendingAfter(unitBits, 0x00)) << unitBits;
        EXPECT_EQ(Bytes({0, 0, 0, 0}), readBytes(1, "V", 8)) << unitBits;
    }
}

TEST_F(PendingWriteDecoding, AChangedValueEndsItAndNeitherQueuedWritesNorPendingBitsAloneKeepIt)
{
    for (const char* unitBits : ALL_WIDTHS) {
        for (unsigned pendingBits : {0u, 0x40000000u}) {
            SCOPED_TRACE(testing::Message() << unitBits << " bits, pending " << pendingBits);
            driver.writeList.clear();
            driver.dataAreas[index].pendingBitWrites = pendingBits;
            putPendingWrite(1, "V", 8, 0, 0x22);
            EXPECT_EQ(0, pendingAfter(unitBits, 0x01));
        }
        driver.dataAreas[index].pendingBitWrites = 0;
        queueSomeWrite();
        putPendingWrite(1, "V", 8, 0, 0x22);
        EXPECT_EQ(0, pendingAfter(unitBits, 0x01)) << unitBits;
    }
}

TEST_F(PendingWriteDecoding, PendingBitsWithQueuedWritesKeepItWhileTheReadValueIsStored)
{
    driver.dataAreas[index].pendingBitWrites = 0x40000000u;
    queueSomeWrite();
    for (const char* unitBits : WIDE) {
        putPendingWrite(1, "V", 8, 0, 0x22);
        EXPECT_EQ(1, pendingAfter(unitBits, 0x01)) << unitBits;
        EXPECT_EQ(1, readBytes(1, "V", 8).at(0)) << unitBits;
    }
}

TEST_F(PendingWriteDecoding, OfABitEvenPendingBitsWithQueuedWritesDoNotKeepIt)
{
    driver.dataAreas[index].pendingBitWrites = 1;
    queueSomeWrite();
    EXPECT_EQ(0, pendingAfter("1", 0x01));
}

TEST_F(PendingWriteDecoding, PendingBitsAreLeftAsTheyAre)
{
    for (const char* unitBits : ALL_WIDTHS) {
        driver.dataAreas[index].pendingBitWrites = 5;
        putPendingWrite(1, "V", 8, 0, 0x22);
        pendingAfter(unitBits, 0x01);
        EXPECT_EQ(5u, driver.dataAreas.at(index).pendingBitWrites) << unitBits;
    }
}
