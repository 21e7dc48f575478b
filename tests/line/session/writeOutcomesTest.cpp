#include "recipeJobs.h"
#include "session/tagWrites.h"
#include "sessionBench.h"

#include <gtest/gtest.h>

// What a failed write may have done in the PLC: each end says whether its frame went out. A
// time-out is 100 ms, and a request has three attempts.

namespace {

enum {
    JOB = 1,
    NUMBER = 3010,
    SECOND = SessionBench::SECOND,
    MS = SessionBench::MS,
    WRITE_REGISTER = 6,
    WRITE_REGISTERS = 16,
    ILLEGAL_ADDRESS = 2,
    DEVICE_FAILURE = 4,
    STILL_WORKING = 5,
    BUSY = 6,
    TARGET_SILENT = 11
};

const QString LOST = QLatin1String("link lost: unplugged");
const QString INTERRUPTED = QLatin1String("interrupted");

} // namespace

class WriteOutcomesTest : public testing::Test
{
protected:
    WriteOutcomesTest()
    {
        // Brings the station into step: the next write goes out without a fence.
        bench.writeWord(JOB, NUMBER, 1);
        bench.runUntilEnded(JOB);
        bench.sent.clear();
    }

    /// Loses the answers to the first `count` frames of writes, which the PLC executes.
    void loseAnswers(int count)
    {
        bench.line.disturb = [this, count](const QByteArray& request, ModelLine::Coming& coming) {
            const int function = request.at(1);
            const bool isWrite = function == WRITE_REGISTER || function == WRITE_REGISTERS;
            if (isWrite && ++m_writes <= count) coming.bytes.clear();
        };
    }

    void expectEnd(int job, JobEnd::Outcome outcome, JobEnd::Execution execution,
                   const QString& reason)
    {
        ASSERT_TRUE(bench.sink.hasEnded(job) || bench.runUntilEnded(job));
        const JobEnd& end = bench.sink.ends[job];
        EXPECT_EQ(outcome, end.outcome);
        EXPECT_EQ(execution, end.execution);
        EXPECT_EQ(reason.toStdString(), end.reason.toStdString());
    }

    SessionBench bench;

private:
    int m_writes = 0;
};

TEST_F(WriteOutcomesTest, WriteThatWentOutUnansweredMayBeExecuted)
{
    loseAnswers(1);
    bench.writeWord(JOB + 1, NUMBER, 2);
    bench.runUntil([this] { return !bench.sent.empty(); });
    bench.plc.station(1).silent = true;
    expectEnd(JOB + 1, JobEnd::TIMED_OUT, JobEnd::MAYBE_EXECUTED,
              QLatin1String("station 1 did not answer; the PLC may have executed it"));
    EXPECT_EQ(2, bench.plc.word(1, NUMBER));
    EXPECT_EQ(QLatin1String("MW3010: station 1 did not answer; the PLC may have executed it"),
              bench.sink.ends[JOB + 1].trouble);
}

TEST_F(WriteOutcomesTest, WriteBehindItIsNotSent)
{
    bench.plc.station(1).silent = true;
    bench.writeWord(JOB + 1, NUMBER, 2);
    bench.writeWord(JOB + 2, NUMBER + 1, 3);
    expectEnd(JOB + 2, JobEnd::TIMED_OUT, JobEnd::NOT_SENT,
              QLatin1String("not sent: station 1 is silent"));
    EXPECT_EQ(1u, bench.sent.size());
}

TEST_F(WriteOutcomesTest, WriteThatWentOutOnALostLinkMayBeExecuted)
{
    // On the new link only fences go out. They are not answered, so they end all attempts.
    loseAnswers(1);
    bench.writeWord(JOB + 1, NUMBER, 2);
    bench.runUntil([this] { return !bench.sent.empty(); });
    bench.loseLink(LOST);
    bench.plc.station(1).silent = true;
    bench.bringLinkBack();
    expectEnd(JOB + 1, JobEnd::TIMED_OUT, JobEnd::MAYBE_EXECUTED,
              QLatin1String("station 1 did not answer; the PLC may have executed it"));
    EXPECT_EQ(1u, bench.sent.size());
}

TEST_F(WriteOutcomesTest, NextWriteDoesNotInheritTheSending)
{
    loseAnswers(1);
    bench.writeWord(JOB + 1, NUMBER, 2);
    ASSERT_TRUE(bench.runUntilEnded(JOB + 1));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 1));
    bench.plc.station(1).refusals[NUMBER + 1] = ILLEGAL_ADDRESS;
    bench.writeWord(JOB + 2, NUMBER + 1, 3);
    expectEnd(JOB + 2, JobEnd::REFUSED, JobEnd::ANSWERED,
              QLatin1String("refused by the PLC: illegal address (exception 2)"));
}

TEST_F(WriteOutcomesTest, RefusalBehindAnUnansweredAttemptIsNoRefusal)
{
    loseAnswers(1);
    bench.writeWord(JOB + 1, NUMBER, 2);
    bench.runUntil([this] { return bench.plc.word(1, NUMBER) == 2; });
    bench.plc.station(1).refusals[NUMBER] = ILLEGAL_ADDRESS;
    expectEnd(JOB + 1, JobEnd::TIMED_OUT, JobEnd::MAYBE_EXECUTED,
              QLatin1String("the PLC may have executed an earlier attempt; the last attempt: "
                            "illegal address (exception 2)"));
    EXPECT_EQ(2u, bench.sent.size());
}

TEST_F(WriteOutcomesTest, LateRefusalOfTheOnlySendingIsARefusal)
{
    bench.plc.station(1).refusals[NUMBER] = ILLEGAL_ADDRESS;
    bench.line.stall = {1, bench.now, bench.now + 150 * MS};
    bench.writeWord(JOB + 1, NUMBER, 2);
    expectEnd(JOB + 1, JobEnd::REFUSED, JobEnd::ANSWERED,
              QLatin1String("refused by the PLC: illegal address (exception 2)"));
    EXPECT_EQ(1u, bench.sent.size());
}

TEST_F(WriteOutcomesTest, RepeatedBusyAnswersAreARefusal)
{
    bench.plc.station(1).refusals[NUMBER] = BUSY;
    bench.writeWord(JOB + 1, NUMBER, 2);
    expectEnd(JOB + 1, JobEnd::REFUSED, JobEnd::ANSWERED,
              QLatin1String("refused by the PLC: device busy (exception 6)"));
    EXPECT_EQ(size_t(SessionBench::ATTEMPTS), bench.sent.size());
}

TEST_F(WriteOutcomesTest, ExceptionThatLeavesTheWriteOpenSaysSo)
{
    // MODBUS Application Protocol V1.1b3, 7: 4 is a failure while the station tried, 11 a station
    // behind a gateway that did not answer the gateway.
    int job = JOB;
    for (const int code : {int(DEVICE_FAILURE), int(TARGET_SILENT)}) {
        bench.plc.station(1).refusals[NUMBER] = code;
        bench.writeWord(++job, NUMBER, 2);
        ASSERT_TRUE(bench.runUntilEnded(job));
        EXPECT_EQ(JobEnd::REFUSED, bench.sink.outcome(job));
        EXPECT_EQ(JobEnd::MAYBE_EXECUTED, bench.sink.ends[job].execution) << code;
        EXPECT_TRUE(bench.sink.ends[job].reason.endsWith(
            QString(QLatin1String("(exception %1); the PLC may have executed it")).arg(code)));
    }
}

TEST_F(WriteOutcomesTest, AcknowledgedAttemptsStayOpen)
{
    bench.plc.station(1).refusals[NUMBER] = STILL_WORKING;
    bench.writeWord(JOB + 1, NUMBER, 2);
    expectEnd(JOB + 1, JobEnd::TIMED_OUT, JobEnd::MAYBE_EXECUTED,
              QLatin1String("the PLC may have executed an earlier attempt; the last attempt: "
                            "acknowledged, still working (exception 5)"));
}

TEST_F(WriteOutcomesTest, ReplacedWriteIsNotSent)
{
    bench.writeWord(JOB + 1, NUMBER, 2);
    bench.runUntil([this] { return !bench.sent.empty(); });
    bench.writeWord(JOB + 2, NUMBER, 3);
    bench.writeWord(JOB + 3, NUMBER, 4);
    expectEnd(JOB + 2, JobEnd::LOST, JobEnd::NOT_SENT,
              QLatin1String("replaced by a newer write, not sent"));
}

TEST_F(WriteOutcomesTest, ReplacedWriteOfTwoWordsIsNotSent)
{
    const std::vector<Tag> tag = {tagOf("MW", 3100, Tag::UINT32)};
    const auto value = [](int low) { return wordBytes(low) + wordBytes(0); };
    bench.feeder.addRecipe(download(JOB + 1, {tagOf("MW", 3200)}, {wordBytes(1)}));
    bench.runUntil([this] { return !bench.sent.empty(); });
    bench.feeder.addRecipe(oneFrameWrite(JOB + 2, tag, {value(2)}));
    bench.feeder.addRecipe(oneFrameWrite(JOB + 3, {tagOf("MW", 3102, Tag::UINT32)}, {value(3)}));
    bench.feeder.addRecipe(oneFrameWrite(JOB + 4, tag, {value(4)}));
    expectEnd(JOB + 2, JobEnd::LOST, JobEnd::NOT_SENT,
              QLatin1String("replaced by a newer write, not sent"));
    for (const int job : {JOB + 1, JOB + 3, JOB + 4}) {
        ASSERT_TRUE(bench.sink.hasEnded(job) || bench.runUntilEnded(job));
        EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(job));
    }
    EXPECT_EQ(4, bench.plc.word(1, 3100));
    EXPECT_EQ(3, bench.plc.word(1, 3102));
    EXPECT_EQ(3u, bench.sent.size());
}

TEST_F(WriteOutcomesTest, RecipeOfTheSameWordsIsNotReplaced)
{
    for (int i = 1; i <= 2; ++i)
        bench.feeder.addRecipe(download(JOB + i, {tagOf("MW", 3100)}, {wordBytes(i)}));
    for (int i = 1; i <= 2; ++i)
        expectEnd(JOB + i, JobEnd::DONE, JobEnd::ANSWERED, QString());
}

TEST_F(WriteOutcomesTest, DroppedJobsSayWhichWriteWentOut)
{
    loseAnswers(1);
    for (int i = 1; i <= 3; ++i)
        bench.writeWord(JOB + i, NUMBER + i, i);
    bench.runUntil([this] { return !bench.sent.empty(); });
    bench.feeder.dropJobs(INTERRUPTED);
    expectEnd(JOB + 1, JobEnd::LOST, JobEnd::MAYBE_EXECUTED,
              QLatin1String("interrupted; the PLC may have executed it"));
    for (int i = 2; i <= 3; ++i)
        expectEnd(JOB + i, JobEnd::LOST, JobEnd::NOT_SENT, QLatin1String("not sent: interrupted"));
    EXPECT_EQ(0, bench.sink.endedTwice);
}

TEST_F(WriteOutcomesTest, DroppedWriteWhoseFenceIsUnderWayIsNotSent)
{
    bench.plc.station(2);
    bench.writeWord(JOB + 1, NUMBER, 2, 2);
    bench.fences.clear();
    bench.runUntil([this] { return !bench.fences.empty(); });
    bench.feeder.dropJobs(INTERRUPTED);
    expectEnd(JOB + 1, JobEnd::LOST, JobEnd::NOT_SENT, QLatin1String("not sent: interrupted"));
}

TEST_F(WriteOutcomesTest, WriteDroppedOnALostLinkMayBeExecuted)
{
    bench.writeWord(JOB + 1, NUMBER, 2);
    bench.runUntil([this] { return !bench.sent.empty(); });
    bench.loseLink(LOST);
    bench.feeder.dropJobs(QLatin1String("unplugged"));
    expectEnd(JOB + 1, JobEnd::LOST, JobEnd::MAYBE_EXECUTED,
              QLatin1String("unplugged; the PLC may have executed it"));
}

TEST_F(WriteOutcomesTest, DroppedReadSaysNothingOfWrites)
{
    bench.know({tagOf("MW", NUMBER)});
    bench.feeder.addRead(JOB + 1, bench.blocks);
    bench.feeder.addRead(JOB + 2, bench.blocks);
    bench.feeder.advance(bench.now);
    bench.feeder.addRecipe(upload(JOB + 3, {tagOf("MW", 3100)}));
    bench.feeder.dropJobs(INTERRUPTED);
    for (int job = JOB + 1; job <= JOB + 3; ++job) {
        EXPECT_EQ(JobEnd::LOST, bench.sink.outcome(job));
        EXPECT_EQ(INTERRUPTED, bench.sink.ends[job].trouble) << job;
    }
}

TEST_F(WriteOutcomesTest, DroppedDownloadNamesTheBlockThatWentOut)
{
    bench.feeder.addRecipe(
        download(JOB + 1, {tagOf("MW", 3100), tagOf("MW", 3110)}, {wordBytes(1), wordBytes(2)}));
    bench.feeder.addRecipe(download(JOB + 2, {tagOf("MW", 3200)}, {wordBytes(3)}));
    bench.runUntil([this] { return bench.sent.size() == 2; });
    bench.feeder.dropJobs(INTERRUPTED);
    expectEnd(JOB + 1, JobEnd::LOST, JobEnd::MAYBE_EXECUTED,
              QLatin1String("interrupted; the PLC may have executed it"));
    EXPECT_EQ(QLatin1String("MW220 of station 1: interrupted; the PLC may have executed it"),
              bench.sink.ends[JOB + 1].trouble);
    EXPECT_EQ(QLatin1String("MW400 of station 1: not sent: interrupted"),
              bench.sink.ends[JOB + 2].trouble);
    // The driver keeps its place in a transfer over a new start, so it has to end this one.
    bench.run(SECOND);
}

TEST_F(WriteOutcomesTest, BlockOfADownloadSaysWhetherItWentOut)
{
    loseAnswers(1);
    bench.feeder.addRecipe(download(JOB + 1, {tagOf("MW", 3100)}, {wordBytes(7)}));
    bench.runUntil([this] { return !bench.sent.empty(); });
    bench.plc.station(1).silent = true;
    expectEnd(JOB + 1, JobEnd::TIMED_OUT, JobEnd::MAYBE_EXECUTED,
              QLatin1String("station 1 did not answer; the PLC may have executed it"));
    bench.feeder.addRecipe(download(JOB + 2, {tagOf("MW", 3100)}, {wordBytes(7)}));
    ASSERT_TRUE(bench.runUntilEnded(JOB + 2));
    EXPECT_EQ(JobEnd::NOT_SENT, bench.sink.ends[JOB + 2].execution);
    EXPECT_EQ(QLatin1String("MW200 of station 1: not sent: station 1 is silent"),
              bench.sink.ends[JOB + 2].trouble);
}
