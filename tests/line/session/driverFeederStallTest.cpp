#include "comparedPolling.h"

#include <gtest/gtest.h>

// A PLC that stops answering for a while and then answers all that it was asked, in order.

namespace {

enum { MS = SessionBench::MS, SECOND = SessionBench::SECOND };

/// After two seconds without trouble the PLC stalls; a second later all is as before.
void expectToOutlive(qint64 stall, const std::vector<Tag>& tags, qint64 timeOut,
                     const LineTiming& timing)
{
    ComparedPolling polling(tags, timeOut, timing);
    polling.bench.run(SECOND);
    const int atFullSpeed = polling.readsIn(SECOND);
    const qint64 begin = polling.bench.now;
    polling.bench.line.stall = {ModelLine::ALL_STATIONS, begin, begin + stall};
    polling.bench.run(stall + SECOND);
    ASSERT_GE(polling.readsIn(SECOND), atFullSpeed * 98 / 100) << stall << " of " << timeOut;
    ASSERT_EQ(0, polling.wrong) << stall << " of " << timeOut;
}

void expectToOutliveStalls(const std::vector<Tag>& tags, qint64 timeOut, const LineTiming& timing,
                           qint64 step)
{
    for (qint64 stall = 100 * MS; stall <= 5 * SECOND; stall += step) {
        expectToOutlive(stall, tags, timeOut, timing);
        if (testing::Test::HasFatalFailure()) return;
    }
}

} // namespace

TEST(DriverFeederStall, OfAnyLengthMixesNoWordsUpAndIsOverInASecond)
{
    for (const qint64 timeOut : {40 * MS, 100 * MS})
        expectToOutliveStalls(wordsApart(), timeOut, LineTiming(LineSettings()), 20 * MS);
}

TEST(DriverFeederStall, OnANetworkMixesNoWordsUpAndIsOverInASecond)
{
    for (const qint64 timeOut : {40 * MS, 100 * MS})
        expectToOutliveStalls(wordsApart(), timeOut, LineTiming::network(), 20 * MS);
}

TEST(DriverFeederStall, MixesNoFullBlocksUpEither)
{
    expectToOutliveStalls(wordsSideBySide(2000), 100 * MS, LineTiming::network(), 340 * MS);
}
