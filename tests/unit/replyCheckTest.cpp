#include "replyCheck.h"
#include "driverFixture.h"

#include <climits>
#include <memory>

class ReplyCheck : public DriverTest
{
};

namespace {

enum { REJECTED = 0, READ = 1, WRITE = 2 };

FRAME_PRO expecting(int recvLen, int itemCount, int dataStart = 0)
{
    FRAME_PRO frame;
    frame.recvLen = recvLen;
    frame.itemCount = itemCount;
    frame.dataStart = dataStart;
    return frame;
}

void expectReadOf(int registers)
{
    driver.frameQueue.append(expecting(2 * registers + 5, registers, 3));
}

void expectEcho()
{
    driver.frameQueue.append(expecting(8, 0));
}

/// Hands over a copy of exactly the reply's size, so that a memory checker sees a byte too many.
int check(const QByteArray& reply)
{
    const size_t size = size_t(reply.size());
    const std::unique_ptr<unsigned char[]> copy(new unsigned char[size]);
    std::copy(reply.begin(), reply.end(), copy.get());
    return check_rcv_data(copy.get(), driver.curReadList, int(size));
}

QByteArray changed(QByteArray reply, int position)
{
    reply[position] = static_cast<char>(reply.at(position) ^ 1);
    return reply;
}

// MODBUS Application Protocol V1.1b3, 6.3, one register, from station 1: by pymodbus 3.0's framer
QByteArray readReply()
{
    return bytes({0x01, 0x03, 0x02, 0x02, 0x2B, 0xF9, 0x3B});
}

} // namespace

TEST_F(ReplyCheck, ResultsHaveTheirNumbers)
{
    EXPECT_EQ(0, REPLY_REJECTED);
    EXPECT_EQ(1, REPLY_TO_READ);
    EXPECT_EQ(2, REPLY_TO_WRITE);
}

TEST_F(ReplyCheck, PublishedReadRepliesAnswerTheirReads)
{
    // MODBUS Application Protocol V1.1b3, 6.3 and 6.4, from station 17: by pymodbus 3.0's framer
    expectReadOf(3);
    EXPECT_EQ(READ,
              check(bytes({0x11, 0x03, 0x06, 0x02, 0x2B, 0x00, 0x00, 0x00, 0x64, 0xC8, 0xBA})));
    driver.frameQueue.clear();
    expectReadOf(1);
    EXPECT_EQ(READ, check(bytes({0x11, 0x04, 0x02, 0x00, 0x0A, 0xF8, 0xF4})));
}

TEST_F(ReplyCheck, PublishedEchoesAnswerTheirWrites)
{
    // MODBUS Application Protocol V1.1b3, 6.5, 6.6, 6.11 and 6.12, from station 17: by pymodbus
    // 3.0's framer
    expectEcho();
    EXPECT_EQ(WRITE, check(bytes({0x11, 0x05, 0x00, 0xAC, 0xFF, 0x00, 0x4E, 0x8B})));
    EXPECT_EQ(WRITE, check(bytes({0x11, 0x06, 0x00, 0x01, 0x00, 0x03, 0x9A, 0x9B})));
    EXPECT_EQ(WRITE, check(bytes({0x11, 0x0F, 0x00, 0x13, 0x00, 0x0A, 0x26, 0x99})));
    EXPECT_EQ(WRITE, check(bytes({0x11, 0x10, 0x00, 0x01, 0x00, 0x02, 0x12, 0x98})));
}

TEST_F(ReplyCheck, ExchangedChecksumBytesAreRejected)
{
    expectReadOf(1);
    EXPECT_EQ(REJECTED, check(bytes({0x01, 0x03, 0x02, 0x02, 0x2B, 0x3B, 0xF9})));
}

TEST_F(ReplyCheck, EveryChangedByteIsRejected)
{
    expectReadOf(1);
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(REJECTED, check(changed(readReply(), i))) << "byte " << i;
}

TEST_F(ReplyCheck, OtherStationsAndFunctionsAreAcceptedWithARightChecksum)
{
    expectReadOf(1);
    EXPECT_EQ(READ, check(withChecksum({0x02, 0x03, 0x02, 0x02, 0x2B})));
    EXPECT_EQ(READ, check(withChecksum({0x01, 0x10, 0x02, 0x02, 0x2B})));
    EXPECT_EQ(READ, check(withChecksum({0x01, 0x03, 0x77, 0x02, 0x2B})));
    driver.frameQueue.clear();
    expectEcho();
    EXPECT_EQ(WRITE, check(withChecksum({0x99, 0x03, 0x00, 0xAC, 0xFF, 0x00})));
}

TEST_F(ReplyCheck, OtherLengthsAreRejected)
{
    expectReadOf(1);
    EXPECT_EQ(REJECTED, check(withChecksum({0x01, 0x03, 0x02, 0x02})));
    EXPECT_EQ(READ, check(withChecksum({0x01, 0x03, 0x02, 0x02, 0x2B})));
    EXPECT_EQ(REJECTED, check(withChecksum({0x01, 0x03, 0x02, 0x02, 0x2B, 0x00})));
    EXPECT_EQ(REJECTED, check(readReply() + readReply()));
    EXPECT_EQ(REJECTED, check(bytes({0x01})));
    EXPECT_EQ(REJECTED, check(bytes({0xFF, 0xFF})));
}

TEST_F(ReplyCheck, ExceptionReplyIsRejectedForItsLength)
{
    // Illegal data address, from station 17: by pymodbus 3.0's framer
    const QByteArray exception = bytes({0x11, 0x83, 0x02, 0xC1, 0x34});
    expectReadOf(1);
    EXPECT_EQ(REJECTED, check(exception));
    driver.frameQueue.clear();
    expectEcho();
    EXPECT_EQ(REJECTED, check(exception));
    driver.frameQueue[0].recvLen = 5;
    EXPECT_EQ(WRITE, check(exception));
}

TEST_F(ReplyCheck, NothingAnswersAFrameThatExpectsNothingWhateverItAskedFor)
{
    for (int itemCount : {0, 5}) {
        driver.frameQueue.clear();
        driver.frameQueue.append(expecting(0, itemCount));
        EXPECT_EQ(WRITE, check(QByteArray()));
        EXPECT_EQ(WRITE, check_rcv_data(nullptr, driver.curReadList, 0));
    }
}

TEST_F(ReplyCheck, SomethingIsRejectedWhenNothingIsExpected)
{
    driver.frameQueue.append(expecting(0, 0));
    EXPECT_EQ(REJECTED, check(bytes({0x01})));
    EXPECT_EQ(REJECTED, check(bytes({0xFF, 0xFF})));
    EXPECT_EQ(REJECTED, check(readReply()));
}

TEST_F(ReplyCheck, SilenceIsRejectedWhereAReplyIsDue)
{
    expectEcho();
    EXPECT_EQ(REJECTED, check(QByteArray()));
    driver.frameQueue.clear();
    expectReadOf(1);
    EXPECT_EQ(REJECTED, check(QByteArray()));
}

TEST_F(ReplyCheck, NoReplyMatchesALengthShorterThanAChecksum)
{
    driver.frameQueue.append(expecting(1, 0));
    EXPECT_EQ(REJECTED, check(QByteArray()));
    for (int value = 0; value < 256; ++value)
        EXPECT_EQ(REJECTED, check(bytes({value}))) << "byte " << value;
}

TEST_F(ReplyCheck, TwoBytesAreTheChecksumOfNothing)
{
    driver.frameQueue.append(expecting(2, 0));
    EXPECT_EQ(WRITE, check(bytes({0xFF, 0xFF})));
    EXPECT_EQ(REJECTED, check(bytes({0x00, 0xFF})));
    EXPECT_EQ(REJECTED, check(bytes({0xFF, 0x00})));
}

TEST_F(ReplyCheck, LengthsBelowZeroAreRejected)
{
    for (int recvLen : {-1, -3, INT_MIN}) {
        driver.frameQueue.clear();
        driver.frameQueue.append(expecting(recvLen, 1));
        EXPECT_EQ(REJECTED, check_rcv_data(nullptr, driver.curReadList, recvLen)) << recvLen;
        EXPECT_EQ(REJECTED, check(QByteArray())) << recvLen;
    }
}

TEST_F(ReplyCheck, KindFollowsFromTheItemCount)
{
    driver.frameQueue.append(expecting(7, 0));
    EXPECT_EQ(WRITE, check(readReply()));
    driver.frameQueue[0].itemCount = -1;
    EXPECT_EQ(READ, check(readReply()));
    driver.frameQueue[0].itemCount = 1;
    EXPECT_EQ(READ, check(readReply()));
}

TEST_F(ReplyCheck, OnlyTheHeadOfTheQueueCounts)
{
    expectReadOf(1);
    expectEcho();
    driver.frameIndex = 1;
    EXPECT_EQ(READ, check(readReply()));
    EXPECT_EQ(REJECTED, check(bytes({0x11, 0x06, 0x00, 0x01, 0x00, 0x03, 0x9A, 0x9B})));
}

TEST_F(ReplyCheck, VariablesAreNotUsed)
{
    expectReadOf(1);
    const QByteArray reply = readReply();
    const unsigned char* at = reinterpret_cast<const unsigned char*>(reply.constData());
    EXPECT_EQ(READ, check_rcv_data(at, QList<VARIABLE>(), 7));
    EXPECT_EQ(READ, check_rcv_data(at, QList<VARIABLE>() << variable(9, "XX", -1, 500), 7));
}

TEST_F(ReplyCheck, EmptyQueueRejects)
{
    EXPECT_EQ(REJECTED, check(readReply()));
    EXPECT_EQ(REJECTED, check(QByteArray()));
}

TEST_F(ReplyCheck, LeavesTheStateAsItIs)
{
    expectReadOf(1);
    driver.failCount = 2;
    driver.commFailed = 1;
    check(readReply());
    check(QByteArray());
    EXPECT_EQ(1, int(driver.frameQueue.size()));
    EXPECT_EQ(7, driver.frameQueue.at(0).recvLen);
    EXPECT_EQ(2, driver.failCount);
    EXPECT_EQ(1, driver.commFailed);
}
