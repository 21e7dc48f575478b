#include "exchangeTest.h"

#include <cstring>

namespace {

class FrameSelection : public ExchangeTest
{
protected:
    /// Runs exchanges with good replies and tells what each was: W a write, C a one-shot read,
    /// P a polled block, - nothing to send.
    std::string run(int exchanges)
    {
        std::string kinds;
        for (int i = 0; i < exchanges; ++i) {
            if (request() == "none") {
                kinds += '-';
                continue;
            }
            const bool write = frame.var.regName == text("QW");
            kinds += write ? 'W' : frame.var.regName == text("IW") ? 'C' : 'P';
            EXPECT_EQ(REPLY_ACCEPTED, write ? echo() : answerWord(0));
        }
        return kinds;
    }
};

/// What a turn makes of the head of a list.
struct HeadRow
{
    std::string request;
    int frameKind;
    int priorityCount;
    const char* area;
    int addr;
};

/// The order of turns: what lies in the lists, and the kinds of the exchanges that follow.
struct OrderRow
{
    int writes;
    int oneShotReads;
    int polledBlocks;
    const char* kinds;
};

} // namespace

TEST_F(FrameSelection, WithEmptyListsThereIsNothingToSendAndTheHostsFrameStays)
{
    driver.frameKind = FRAME_CYCLIC_READ;
    driver.priorityCount = 7;
    frame.sendLen = 77;
    EXPECT_EQ(0, intf_getSendFrame(&frame));
    EXPECT_EQ(77, frame.sendLen);
    EXPECT_EQ(FRAME_IDLE, driver.frameKind);
    EXPECT_EQ(0, driver.priorityCount);
    EXPECT_EQ(0, int(driver.frameQueue.size()));
}

TEST_F(FrameSelection, ANullFrameIsLeftAlone)
{
    EXPECT_EQ(0, intf_getSendFrame(nullptr));
    queueWrites(1);
    EXPECT_EQ(0, intf_getSendFrame(nullptr));
}

TEST_F(FrameSelection, ATurnBuildsItsRequestFromTheHeadOfItsList)
{
    const HeadRow rows[] = {
        {hex(withChecksum({1, 6, 0, 0, 0, 0})), FRAME_WRITE, 1, "QW", 0},
        {hex(withChecksum({1, 4, 0, 0, 0, 1})), FRAME_ONE_SHOT_READ, 1, "IW", 0},
        {hex(withChecksum({1, 3, 0x0B, 0xB8, 0, 1})), FRAME_CYCLIC_READ, 0, "MW", 3000},
    };
    for (const HeadRow& row : rows) {
        SCOPED_TRACE(row.area);
        initialise();
        if (row.frameKind == FRAME_WRITE) queueWrites(2);
        if (row.frameKind == FRAME_ONE_SHOT_READ) queueOneShotReads(2);
        if (row.frameKind == FRAME_CYCLIC_READ) poll(2);
        driver.varsInFrame = 9;
        driver.priorityCount = row.frameKind == FRAME_CYCLIC_READ ? 2 : 0;
        EXPECT_EQ(row.request, request());
        EXPECT_EQ(row.frameKind, driver.frameKind);
        EXPECT_EQ(row.priorityCount, driver.priorityCount);
        EXPECT_EQ(1, driver.varsInFrame);
        EXPECT_EQ(row.addr, driver.curVar.addr);
        EXPECT_EQ(row.area, driver.curVar.regName.toStdString());
        EXPECT_EQ(
            2, int(driver.writeList.size() + driver.condReadList.size() + driver.readList.size()));
    }
}

TEST_F(FrameSelection, AReadIsHandedToItsBuilderAsTheOnlyElement)
{
    driver.curReadList.append(variable(9, "QW", 1, 1));
    driver.curReadList.append(variable(9, "QW", 2, 1));
    poll(2);
    request();
    EXPECT_EQ("3000", addresses(driver.curReadList));
}

TEST_F(FrameSelection, TheHostGetsACopyOfTheWholeFrame)
{
    VARIABLE polled = variable(3, "MW", 3000, 4, {1, 2, 3});
    polled.varId = 4;
    driver.readList.append(polled);
    request();
    EXPECT_EQ(8, frame.sendLen);
    EXPECT_EQ(13, frame.recvLen);
    EXPECT_EQ(3, frame.dataStart);
    EXPECT_EQ(4, frame.itemCount);
    EXPECT_EQ(4, frame.var.varId);
    EXPECT_EQ(3, frame.var.station);
    EXPECT_EQ("MW", frame.var.regName.toStdString());
    EXPECT_EQ(3000, frame.var.addr);
    EXPECT_EQ(4, frame.var.count);
    EXPECT_EQ(0, std::memcmp(polled.value, frame.var.value, sizeof polled.value));
}

TEST_F(FrameSelection, TheSpareFieldOfTheHostsRecordIsOverwrittenByTheFrames)
{
    poll(1);
    frame.spare = 77;
    request();
    EXPECT_EQ(0, frame.spare);
    driver.frameQueue[0].spare = 5;
    request();
    EXPECT_EQ(5, frame.spare);
}

TEST_F(FrameSelection, TheHostsCopyIsItsOwn)
{
    poll(1);
    const std::string sent = request();
    frame = FRAME_PRO();
    EXPECT_EQ(sent, request());
}

TEST_F(FrameSelection, WritesComeBeforeOneShotReadsAndThoseBeforePollingWithinTheirShares)
{
    const OrderRow rows[] = {
        {1, 1, 1, "WCPP"},
        // After ten writes or three one-shot reads a polled block is let through.
        {12, 0, 1, "WWWWWWWWWWPWWP"},
        {0, 4, 1, "CCCPCP"},
        // Writes count against the three one-shot reads.
        {3, 2, 1, "WWWPCCP"},
        {2, 2, 1, "WWCPCP"},
        // With nothing polled an empty turn follows.
        {11, 0, 0, "WWWWWWWWWW-W-"},
        {0, 4, 0, "CCC-C-"},
    };
    for (const OrderRow& row : rows) {
        SCOPED_TRACE(row.kinds);
        initialise();
        queueWrites(row.writes);
        queueOneShotReads(row.oneShotReads);
        poll(row.polledBlocks);
        EXPECT_EQ(row.kinds, run(int(std::strlen(row.kinds))));
    }
}

TEST_F(FrameSelection, WritesGoOnBehindOneShotReads)
{
    queueOneShotReads(3);
    poll(1);
    EXPECT_EQ("CCC", run(3));
    queueWrites(8);
    EXPECT_EQ("WWWWWWWPWP", run(10));
}

TEST_F(FrameSelection, AnEmptyTurnLeavesTheDriverIdle)
{
    queueOneShotReads(4);
    run(3);
    EXPECT_EQ("none", request());
    EXPECT_EQ(FRAME_IDLE, driver.frameKind);
    EXPECT_EQ(0, driver.priorityCount);
    EXPECT_EQ(1, int(driver.condReadList.size()));
}

TEST_F(FrameSelection, APendingFrameIsOfferedAgain)
{
    poll(2);
    const std::string first = request();
    queueWrites(1);
    raise(RECIPE_UPLOAD_FLAG);
    driver.rcpVars.append(recipeVariable(CONTEXT, 1, "MW", 3000, 1, 0));
    driver.handshakePending = 1;
    EXPECT_EQ(first, request());
    EXPECT_EQ(FRAME_CYCLIC_READ, driver.frameKind);
    EXPECT_EQ(0, driver.priorityCount);
    EXPECT_EQ(1, int(driver.frameQueue.size()));
}

TEST_F(FrameSelection, ARejectedFrameIsOfferedAgainUnchanged)
{
    queueWrites(2);
    const std::string first = request();
    EXPECT_EQ(REPLY_RETRY, silence());
    EXPECT_EQ(first, request());
    EXPECT_EQ(1, driver.priorityCount);
}

TEST_F(FrameSelection, AFrameGivenUpMakesRoomForTheNext)
{
    queueWrites(1);
    poll(1);
    request();
    giveUp();
    EXPECT_EQ("P", run(1));
}

TEST_F(FrameSelection, APendingHandshakeComesFirst)
{
    driver.handshakePending = 1;
    queueWrites(1);
    raise(RECIPE_DOWNLOAD_FLAG);
    driver.rcpVars.append(recipeVariable(CONTEXT, 1, "MW", 3000, 1, 0));
    EXPECT_EQ("", request());
    EXPECT_EQ(FRAME_HANDSHAKE, driver.frameKind);
    EXPECT_EQ(0, frame.recvLen);
    EXPECT_EQ(0, frame.dataStart);
    EXPECT_EQ(0, frame.itemCount);
    EXPECT_EQ("", frame.var.regName.toStdString());
    EXPECT_EQ(0, driver.priorityCount);
}

TEST_F(FrameSelection, AHandshakeTakesOneTurnOnly)
{
    driver.handshakePending = -1;
    queueWrites(1);
    EXPECT_EQ("", request());
    driver.handshakePending = 0;
    EXPECT_EQ(REPLY_ACCEPTED, silence());
    EXPECT_EQ(1, int(driver.writeList.size()));
    EXPECT_EQ("W-", run(2));
}

TEST_F(FrameSelection, AFreshDriverHasNothingToSend)
{
    driver.~Protocol();
    new (&driver) Protocol();
    EXPECT_EQ("none", request());
}
