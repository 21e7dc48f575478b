#include "session/stationScan.h"
#include "modelLine.h"
#include "randomSource.h"
#include "stepBound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <set>

namespace {

enum { MS = 1000, WAIT = 100 * MS, BAUD = 38400, LAST_STATION = 247 };

std::vector<int> numbers(int first, int last)
{
    std::vector<int> all(size_t(last - first + 1));
    std::iota(all.begin(), all.end(), first);
    return all;
}

LineTiming timing()
{
    LineSettings line;
    line.baud = BAUD;
    return LineTiming(line);
}

/// A scan of a model line, on a virtual clock.
class StationScanTest : public testing::Test
{
protected:
    StationScanTest() : line(plc, timing()) {}

    static StationScan::Settings settings(const std::vector<int>& stations, int attempts = 1)
    {
        StationScan::Settings made;
        made.stations = stations;
        made.attempts = attempts;
        made.exchange.answer = WAIT;
        return made;
    }

    void run(StationScan& scan)
    {
        while (!scan.isOver() && bound.allowsStepAt(now)) {
            const ExchangeMachine::Step step = scan.advance(now);
            if (!step.send.isEmpty()) {
                sent.push_back(step.send);
                line.send(step.send, now);
            }
            for (const StationScan::Found& one : scan.takeFound())
                found.push_back(one);
            if (scan.isOver()) return;
            if (!line.isQuiet() && line.nextAt() <= step.wakeAt) {
                now = std::max(now, line.nextAt());
                scan.received(line.takeNext(), now);
            } else {
                now = std::max(now, step.wakeAt);
            }
        }
    }

    std::vector<int> foundStations() const
    {
        std::vector<int> stations;
        for (const StationScan::Found& one : found)
            stations.push_back(one.station);
        return stations;
    }

    PlcModel plc;
    ModelLine line;
    qint64 now = 0;
    StepBound bound;
    std::vector<QByteArray> sent;
    std::vector<StationScan::Found> found;
};

} // namespace

TEST_F(StationScanTest, FindsTheStationsThatAnswer)
{
    for (const int station : {3, 17, 247})
        plc.station(station);
    StationScan scan(timing(), settings(numbers(1, LAST_STATION)));
    run(scan);
    EXPECT_EQ(foundStations(), std::vector<int>({3, 17, 247}));
    EXPECT_EQ(scan.asked(), 247);
    EXPECT_TRUE(scan.unclear().empty());
}

TEST_F(StationScanTest, TellsTheReplyTime)
{
    plc.station(1);
    StationScan scan(timing(), settings({1}));
    run(scan);
    ASSERT_EQ(found.size(), 1U);
    const qint64 onTheWire = now - ModelLine::TURNAROUND; // request and reply
    EXPECT_GE(found[0].replyTime, ModelLine::TURNAROUND);
    EXPECT_LT(found[0].replyTime, ModelLine::TURNAROUND + onTheWire);
}

TEST_F(StationScanTest, AnswerFasterThanTheLineTakesNoTime)
{
    plc.station(1);
    StationScan scan(timing(), settings({1}));
    ExchangeMachine::Step step = scan.advance(now);
    while (step.send.isEmpty())
        step = scan.advance(now = step.wakeAt);
    scan.received(plc.answer(step.send), now);
    const std::vector<StationScan::Found> all = scan.takeFound();
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0].replyTime, 0);
}

TEST_F(StationScanTest, ExceptionReplyShowsItsStation)
{
    PlcModel::Station& refusing = plc.station(5);
    for (int number = 0; number < 65536; ++number)
        refusing.refusals[number] = 2;
    StationScan scan(timing(), settings({4, 5, 6}));
    run(scan);
    EXPECT_EQ(foundStations(), std::vector<int>({5}));
}

TEST_F(StationScanTest, GatewayThatReachesNoStationShowsNone)
{
    for (const int code : {10, 11}) {
        PlcModel::Station& behindGateway = plc.station(code);
        for (int number = 0; number < 65536; ++number)
            behindGateway.refusals[number] = code;
    }
    plc.station(12);
    StationScan scan(timing(), settings({10, 11, 12}, 2));
    run(scan);
    EXPECT_EQ(foundStations(), std::vector<int>({12}));
}

TEST_F(StationScanTest, SendsOnlyReads)
{
    plc.station(9);
    StationScan scan(timing(), settings(numbers(1, LAST_STATION), 2));
    run(scan);
    ASSERT_GT(sent.size(), 247U);
    for (const QByteArray& request : sent) {
        const int function = request.at(1);
        EXPECT_TRUE(function == 3 || function == 4) << function;
    }
}

TEST_F(StationScanTest, AsksOnlySilentStationsInFurtherRounds)
{
    plc.station(2);
    int requests = 0;
    line.losesRequest = [&requests] { return ++requests <= 3; }; // the first round
    plc.station(3).silent = true;
    StationScan scan(timing(), settings({1, 2, 3}, 3));
    run(scan);
    EXPECT_EQ(foundStations(), std::vector<int>({2}));
    EXPECT_EQ(scan.asked(), 3 + 3 + 2);
    EXPECT_EQ(scan.mostAsked(), 9);
}

TEST_F(StationScanTest, LateAnswerShowsItsOwnStation)
{
    plc.station(1);
    line.disturb = [](const QByteArray&, ModelLine::Coming& coming) {
        coming.delay = WAIT + 60 * MS; // while station 2 is asked
    };
    StationScan scan(timing(), settings({1, 2, 3}));
    run(scan);
    ASSERT_EQ(foundStations(), std::vector<int>({1}));
    EXPECT_EQ(found[0].replyTime, -1);
}

TEST_F(StationScanTest, NoiseIsUnclearAndNoStation)
{
    plc.station(2);
    line.disturb = [](const QByteArray&, ModelLine::Coming& coming) {
        if (!coming.bytes.isEmpty()) coming.bytes = QByteArray("\x55\xAA\x00\x13", 4);
    };
    StationScan scan(timing(), settings({1, 2, 3}));
    run(scan);
    EXPECT_TRUE(found.empty());
    EXPECT_EQ(scan.unclear(), std::vector<int>({2}));
}

TEST_F(StationScanTest, EchoIsNoStation)
{
    line.echoes = true;
    plc.station(2);
    StationScan scan(timing(), settings({1, 2, 3}));
    run(scan);
    EXPECT_EQ(foundStations(), std::vector<int>({2}));
}

TEST_F(StationScanTest, TakesNoLongerThanSaidAhead)
{
    const StationScan::Settings all = settings(numbers(1, LAST_STATION), 2);
    StationScan scan(timing(), all);
    run(scan);
    EXPECT_TRUE(found.empty());
    EXPECT_LE(now, StationScan::longestTime(timing(), all) * 105 / 100); // quiet behind a time-out
    EXPECT_GE(now, qint64(2) * LAST_STATION * WAIT);
}

// Random stations on a line that loses, damages, delays and doubles: a station that is not there is
// never found, and each station is found at most once.
TEST_F(StationScanTest, NeverFindsAStationThatIsNotThere)
{
    enum { CASES = 200, STATIONS = 30 };
    int foundInAll = 0;
    for (int seed = 1; seed <= CASES; ++seed) {
        RandomSource random{std::uint64_t(seed)};
        plc = PlcModel();
        line.cut();
        found.clear();
        std::set<int> there;
        for (int station = 1; station <= STATIONS; ++station) {
            if (!random.oneIn(3)) continue;
            plc.station(station);
            there.insert(station);
        }
        line.echoes = random.oneIn(2);
        line.losesRequest = [&random] { return random.oneIn(10); };
        line.comesAgain = [&random] {
            return random.oneIn(5) ? qint64(random.below(300)) * MS : qint64(ModelLine::ONCE);
        };
        line.disturb = [&random](const QByteArray&, ModelLine::Coming& coming) {
            if (random.oneIn(5)) coming.delay = qint64(random.below(500)) * MS;
            if (random.oneIn(5) && !coming.bytes.isEmpty())
                coming.bytes[random.below(int(coming.bytes.size()))] = char(random.below(256));
        };
        StationScan scan(timing(), settings(numbers(1, STATIONS), 1 + random.below(3)));
        run(scan);
        std::set<int> once;
        for (const int station : foundStations()) {
            EXPECT_EQ(there.count(station), 1U) << "station " << station << ", seed " << seed;
            EXPECT_TRUE(once.insert(station).second) << "station " << station << ", seed " << seed;
        }
        foundInAll += int(once.size());
    }
    EXPECT_GT(foundInAll, CASES * STATIONS / 6); // of a third that is there
}
