#include "driverExchangeFixture.h"

#include <gtest/gtest.h>

// The ends of the driver's requests.

TEST_F(DriverExchangeTest, IdleWithoutRequests)
{
    EXPECT_TRUE(exchange.advance(0).isIdle);
    run(10 * SECOND);
    EXPECT_TRUE(sent.empty());
    EXPECT_TRUE(exchange.isBetweenRequests());
}

TEST_F(DriverExchangeTest, DriverAcceptsAnAnsweredRequest)
{
    write(STATION, NUMBER, 7);
    run(SECOND);
    ASSERT_EQ(1u, finished.size());
    EXPECT_EQ(END_ANSWERED, finished[0].end);
    EXPECT_EQ(int(REPLY_ACCEPTED), finished[0].result);
    EXPECT_EQ(2 * MS, finished[0].replyTime);
    EXPECT_EQ(1, finished[0].timesSent);
    EXPECT_EQ(7, plc.word(STATION, NUMBER));
    EXPECT_TRUE(exchange.isBetweenRequests());
}

TEST_F(DriverExchangeTest, RefusalIsNotRetried)
{
    for (const int code : {1, 2, 3, 4, 7, 8, 10, 11, 255}) {
        refuses(code);
        finished.clear();
        sent.clear();
        const qint64 start = now;
        write(STATION, NUMBER, 7);
        run(SECOND);
        ASSERT_EQ(1u, finished.size()) << code;
        EXPECT_EQ(END_REFUSED, finished[0].end);
        EXPECT_EQ(code, finished[0].exceptionCode);
        EXPECT_EQ(int(REPLY_GIVEN_UP), finished[0].result);
        EXPECT_EQ(1u, timesOf(WRITE).size()) << code;
        EXPECT_LE(timesOf(WRITE).front(), start + 4 * MS);
    }
}

TEST_F(DriverExchangeTest, BusyStationIsRetriedAfterDoublingPauses)
{
    for (const int code : {int(STILL_WORKING_CODE), int(BUSY_CODE)}) {
        refuses(code, ATTEMPTS - 1);
        finished.clear();
        sent.clear();
        write(STATION, NUMBER, 7);
        run(SECOND);
        ASSERT_EQ(size_t(ATTEMPTS), finished.size()) << code;
        EXPECT_EQ(int(REPLY_RETRY), finished[0].result);
        EXPECT_EQ(int(REPLY_RETRY), finished[1].result);
        EXPECT_EQ(int(REPLY_ACCEPTED), finished[2].result);
        const std::vector<qint64> times = timesOf(WRITE);
        ASSERT_EQ(size_t(ATTEMPTS), times.size()) << code;
        // The answer takes 2 ms. The fence ahead of the next attempt takes 2 ms.
        EXPECT_GE(times[1] - times[0], 102 * MS);
        EXPECT_LE(times[1] - times[0], 104 * MS);
        EXPECT_GE(times[2] - times[1], 202 * MS);
        EXPECT_LE(times[2] - times[1], 204 * MS);
    }
}

TEST_F(DriverExchangeTest, PermanentlyBusyStationEndsAsRefused)
{
    for (const int code : {int(STILL_WORKING_CODE), int(BUSY_CODE)}) {
        refuses(code);
        finished.clear();
        write(STATION, NUMBER, 7);
        run(SECOND);
        ASSERT_EQ(size_t(ATTEMPTS), finished.size());
        EXPECT_EQ(END_REFUSED, finished.back().end);
        EXPECT_EQ(code, finished.back().exceptionCode);
        EXPECT_EQ(int(REPLY_GIVEN_UP), finished.back().result);
    }
}

TEST_F(DriverExchangeTest, NextBusyRequestStartsWithTheShortestPause)
{
    for (int i = 0; i < 2; ++i) {
        refuses(BUSY_CODE, ATTEMPTS - 1);
        sent.clear();
        write(STATION, NUMBER, 7 + i);
        run(SECOND);
        const std::vector<qint64> times = timesOf(WRITE);
        ASSERT_EQ(size_t(ATTEMPTS), times.size());
        EXPECT_LE(times[1] - times[0], 104 * MS) << i;
    }
}

TEST_F(DriverExchangeTest, RequestToASilentStationIsGivenUpUnsent)
{
    silent.insert(STATION);
    write(STATION, NUMBER, 7);
    write(OTHER_STATION, NUMBER, 8);
    run(SECOND);
    ASSERT_EQ(2u, finished.size());
    EXPECT_TRUE(finished[0].isPointless);
    EXPECT_EQ(0, finished[0].timesSent);
    EXPECT_EQ(END_SILENT, finished[0].end);
    EXPECT_EQ(int(REPLY_GIVEN_UP), finished[0].result);
    EXPECT_FALSE(finished[1].isPointless);
    EXPECT_EQ(8, plc.word(OTHER_STATION, NUMBER));
    for (const SentFrame& frame : sent)
        EXPECT_EQ(char(OTHER_STATION), frame.bytes.at(0));
}

TEST_F(DriverExchangeTest, RequestTooLongForAFrameIsGivenUpUnsent)
{
    // The driver's buffer for a frame has 1023 bytes, enough for 507 words.
    _RCP_VAR_PRO record;
    record.linkNo = StartedDriver::LINK_NUMBER;
    record.station = STATION;
    record.regName = QLatin1String("MW");
    record.addr = NUMBER;
    record.count = 508;
    record.bufOffset = 0;
    ASSERT_EQ(1, started.setRecipe({record}, QByteArray(2 * 508, '\x11')));
    started.raise(RECIPE_DOWNLOAD_FLAG);
    run(SECOND);
    ASSERT_EQ(1u, finished.size());
    EXPECT_EQ(int(REPLY_GIVEN_UP), finished[0].result);
    EXPECT_EQ(0, finished[0].frame.sendLen);
    EXPECT_TRUE(finished[0].isPointless);
    EXPECT_FALSE(started.isRaised(RECIPE_DOWNLOAD_FLAG));
    EXPECT_TRUE(sent.empty());
}

TEST_F(DriverExchangeTest, LaterAttemptsOfAnUnansweredRequestAreFences)
{
    write(STATION, NUMBER, 7);
    run(SECOND);
    plc.station(STATION).silent = true;
    finished.clear();
    sent.clear();
    write(STATION, NUMBER, 8);
    run(SECOND);
    ASSERT_EQ(size_t(ATTEMPTS), finished.size());
    EXPECT_EQ(int(REPLY_RETRY), finished[1].result);
    EXPECT_EQ(int(REPLY_GIVEN_UP), finished[2].result);
    EXPECT_EQ(END_SILENT, finished[2].end);
    EXPECT_EQ(1, finished[2].timesSent);
    EXPECT_EQ(1u, timesOf(WRITE).size());
    EXPECT_EQ(ATTEMPTS - 1, fencesTo(STATION));
}

TEST_F(DriverExchangeTest, LostLinkUsesUpNoAttempt)
{
    write(STATION, NUMBER, 7);
    for (int loss = 0; loss < 2 * ATTEMPTS; ++loss) {
        const size_t before = timesOf(WRITE).size();
        while (timesOf(WRITE).size() == before)
            ASSERT_TRUE(stepUntil(now + SECOND));
        exchange.linkLost();
        line.cut();
        now += SECOND;
        exchange.linkOpened(now);
    }
    EXPECT_TRUE(finished.empty());
    run(SECOND);
    ASSERT_EQ(1u, finished.size());
    EXPECT_EQ(int(REPLY_ACCEPTED), finished[0].result);
}

TEST_F(DriverExchangeTest, InterruptedRequestIsFirstOnTheNewLink)
{
    write(STATION, NUMBER, 7);
    while (timesOf(WRITE).empty())
        ASSERT_TRUE(stepUntil(SECOND));
    write(STATION, NUMBER + 1, 8);
    exchange.linkLost();
    EXPECT_FALSE(exchange.isBetweenRequests());
    line.cut();
    exchange.linkOpened(now);
    while (timesOf(WRITE).size() < 2)
        ASSERT_TRUE(stepUntil(SECOND));
    EXPECT_EQ(sent.front().isFence ? sent[1].bytes : sent[0].bytes, sent.back().bytes);
}

TEST_F(DriverExchangeTest, MoreThanTenWritesAreSentWithoutPolling)
{
    enum { WRITES = 25 };
    for (int i = 0; i < WRITES; ++i)
        write(STATION, NUMBER + i, i + 1);
    run(SECOND);
    EXPECT_EQ(size_t(WRITES), finished.size());
    EXPECT_EQ(int(WRITES), plc.word(STATION, NUMBER + WRITES - 1));
}
