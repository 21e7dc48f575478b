// A late reply of the right length and checksum: what the driver alone makes of it, and what is
// left of it behind a host that expects late replies.

#include "benchHost.h"
#include "builtDriver.h"
#include "listeningHost.h"

#include <gtest/gtest.h>

namespace {

enum { FIRST = 3000, SECOND = 3010, FIRST_VALUE = 0x1111, SECOND_VALUE = 0x2222, ONE_ATTEMPT = 1 };

/// Two blocks of one word each, whose replies look alike.
class LateReply : public testing::Test
{
protected:
    LateReply() : plc(1), line(plc, 1), panel(driver(), {ONE_ATTEMPT})
    {
        plc.setElement(1, "MW", FIRST, FIRST_VALUE);
        plc.setElement(1, "MW", SECOND, SECOND_VALUE);
    }

    void pollBoth()
    {
        ASSERT_EQ(2, panel.poll({{1, "MW", FIRST, 1}, {1, "MW", SECOND, 1}}));
    }

    /// The next request's answer comes in time for the one after it.
    QByteArray missedAnswer()
    {
        FRAME_PRO frame;
        EXPECT_TRUE(panel.nextFrame(frame));
        const QByteArray late = plc.answer(requestOf(frame));
        EXPECT_EQ(REPLY_GIVEN_UP, panel.takeReply(QByteArray()));
        return late;
    }

    int handIn(const QByteArray& reply)
    {
        FRAME_PRO frame;
        EXPECT_TRUE(panel.nextFrame(frame));
        return panel.takeReply(reply);
    }

    int exchangeThrough(ListeningHost& host)
    {
        FRAME_PRO frame;
        EXPECT_TRUE(panel.nextFrame(frame));
        return panel.takeReply(host.exchange(frame));
    }

    PlcModel plc;
    FaultyLine line;
    BenchHost panel;
};

} // namespace

TEST_F(LateReply, IsShownAsAnotherBlocksValueByTheDriverAlone)
{
    pollBoth();
    const QByteArray late = missedAnswer();
    EXPECT_EQ(REPLY_ACCEPTED, handIn(late));
    EXPECT_EQ(FIRST_VALUE, panel.shown(1, "MW", SECOND));
}

TEST_F(LateReply, OfAnotherLengthIsRefusedByTheDriverAlone)
{
    ASSERT_EQ(2, panel.poll({{1, "MW", FIRST, 2}, {1, "MW", SECOND, 1}}));
    const QByteArray late = missedAnswer();
    EXPECT_EQ(REPLY_GIVEN_UP, handIn(late));
    EXPECT_EQ(0, panel.shown(1, "MW", SECOND));
}

TEST_F(LateReply, ConfirmsAnotherWriteForTheDriverAlone)
{
    panel.write({1, "MW", FIRST, 1}, {5}, 1);
    const QByteArray late = missedAnswer();
    panel.write({1, "MW", SECOND, 1}, {6}, 2);
    EXPECT_EQ(REPLY_ACCEPTED, handIn(late));
    EXPECT_EQ(6, panel.shown(1, "MW", SECOND));
    EXPECT_EQ(SECOND_VALUE, plc.element(1, "MW", SECOND));
}

TEST_F(LateReply, IsWaitedForByAListeningHostBeforeARequestOfTheSameShape)
{
    pollBoth();
    ListeningHost host(line);
    line.setNextFault(Fault::LATE);
    EXPECT_EQ(REPLY_GIVEN_UP, exchangeThrough(host));
    for (int i = 0; i <= FaultyLine::LATEST; ++i)
        EXPECT_EQ(REPLY_ACCEPTED, exchangeThrough(host));
    EXPECT_EQ(1, host.heldBack());
    EXPECT_EQ(FIRST_VALUE, panel.shown(1, "MW", FIRST));
    EXPECT_EQ(SECOND_VALUE, panel.shown(1, "MW", SECOND));
}

TEST_F(LateReply, OfAnotherShapeIsDroppedByAListeningHostAndConfirmsNothing)
{
    ListeningHost host(line);
    panel.write({1, "MW", FIRST, 1}, {5}, 1);
    line.setNextFault(Fault::LATE);
    EXPECT_EQ(REPLY_GIVEN_UP, exchangeThrough(host));
    int accepted = 0;
    for (int i = 0; i < FaultyLine::LATEST; ++i) {
        panel.write({1, "MW", SECOND + i, 1}, {6 + i}, 2 + i);
        const int result = exchangeThrough(host);
        accepted += result == REPLY_ACCEPTED ? 1 : 0;
    }
    EXPECT_EQ(FaultyLine::LATEST - 1, accepted);
    EXPECT_EQ(1, host.dropped());
}
