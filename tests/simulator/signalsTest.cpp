#include "signals.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace {

Signal signalOf(SignalKind kind, std::int64_t periodMs, int amplitude)
{
    Signal made;
    made.kind = kind;
    made.periodMs = periodMs;
    made.amplitude = amplitude;
    return made;
}

/// The values of one signal, at each millisecond from 0 on.
std::vector<int> valuesOf(const Signal& signal, int milliseconds)
{
    SignalSet set({signal}, 1);
    std::vector<int> values;
    for (int ms = 0; ms < milliseconds; ++ms) {
        const std::vector<PlaceValue> changes = set.changes(ms);
        values.push_back(changes.empty() ? values.back() : changes[0].value);
    }
    return values;
}

} // namespace

TEST(Signals, RampClimbsToItsAmplitudeAndRestarts)
{
    const std::vector<int> values = valuesOf(signalOf(SIGNAL_RAMP, 100, 99), 300);
    int restarts = 0;
    for (std::size_t i = 1; i < values.size(); ++i) {
        if (values[i] == 0) ++restarts;
        EXPECT_EQ(values[i - 1] == 99 ? 0 : values[i - 1] + 1, values[i]) << i;
    }
    EXPECT_EQ(3, restarts);
}

TEST(Signals, SineIsSignedInTwosComplement)
{
    std::set<int> seen;
    for (const int value : valuesOf(signalOf(SIGNAL_SINE, 400, 999), 400))
        seen.insert(static_cast<std::int16_t>(value));
    EXPECT_EQ(-999, *seen.begin());
    EXPECT_EQ(999, *seen.rbegin());
    EXPECT_EQ(1u, seen.count(0));
}

TEST(Signals, ToggleIsOnForHalfItsPeriod)
{
    std::map<int, int> times;
    for (const int value : valuesOf(signalOf(SIGNAL_TOGGLE, 100, 5), 300))
        ++times[value];
    EXPECT_EQ((std::map<int, int>{{0, 150}, {5, 150}}), times);
}

TEST(Signals, CounterCountsPeriodsAndWrapsAboveItsAmplitude)
{
    std::vector<int> steps;
    for (const int value : valuesOf(signalOf(SIGNAL_COUNTER, 10, 2), 100)) {
        if (steps.empty() || steps.back() != value) steps.push_back(value);
    }
    ASSERT_GE(steps.size(), 10u);
    for (std::size_t i = 0; i < steps.size(); ++i)
        EXPECT_EQ(int(i % 3), steps[i]) << i;
}

TEST(Signals, RandomWalkGoesByFiftiethsWithinItsAmplitude)
{
    std::map<int, int> steps;
    int last = 500;
    for (const int value : valuesOf(signalOf(SIGNAL_WALK, 1, 1000), 20000)) {
        ++steps[value - last];
        EXPECT_GE(value, 0);
        EXPECT_LE(value, 1000);
        last = value;
    }
    ASSERT_EQ(3u, steps.size());
    for (const int step : {-20, 0, 20}) // each in a third of the cases; a limit turns some into 0
        EXPECT_GT(steps[step], 5500) << step;
}

TEST(Signals, RandomWalkDependsOnTheTimeAloneAndOnItsSeed)
{
    const Signal signal = signalOf(SIGNAL_WALK, 10, 1000);
    SignalSet often({signal}, 7);
    SignalSet once({signal}, 7);
    SignalSet other({signal}, 8);
    int last = 0;
    for (int ms = 0; ms <= 30000; ++ms) {
        for (const PlaceValue& change : often.changes(ms))
            last = change.value;
    }
    ASSERT_EQ(1u, once.changes(30000).size());
    EXPECT_EQ(last, SignalSet({signal}, 7).changes(30000)[0].value);
    EXPECT_NE(last, other.changes(30000)[0].value);
}

TEST(Signals, SmallRandomWalkStillMoves)
{
    std::set<int> seen;
    for (const int value : valuesOf(signalOf(SIGNAL_WALK, 1, 3), 1000))
        seen.insert(value);
    EXPECT_EQ((std::set<int>{0, 1, 2, 3}), seen);
}

TEST(Signals, UnchangedValueIsNotRepeated)
{
    SignalSet set({signalOf(SIGNAL_COUNTER, 1000, 65535)}, 1);
    EXPECT_EQ(1u, set.changes(0).size());
    EXPECT_EQ(0u, set.changes(0).size());
    EXPECT_EQ(1u, set.changes(1000).size());
}

TEST(Signals, TheSeedDecidesThePhases)
{
    const std::vector<Signal> signals(8, signalOf(SIGNAL_RAMP, 10000, 9999));
    SignalSet first(signals, 1);
    SignalSet same(signals, 1);
    SignalSet other(signals, 2);
    const std::vector<PlaceValue> values = first.changes(0);
    const std::vector<PlaceValue> again = same.changes(0);
    const std::vector<PlaceValue> others = other.changes(0);
    std::set<int> phases;
    int differences = 0;
    for (std::size_t i = 0; i < signals.size(); ++i) {
        EXPECT_EQ(values[i].value, again[i].value);
        if (values[i].value != others[i].value) ++differences;
        phases.insert(values[i].value);
    }
    EXPECT_GT(phases.size(), 6u);
    EXPECT_GT(differences, 6);
}

TEST(Signals, DemoSignalsHaveEveryKindOnEachStationWithoutOverlap)
{
    std::map<int, std::set<SignalKind>> kinds;
    std::set<std::pair<int, int>> inputWords;
    std::size_t inputs = 0;
    for (const Signal& signal : demoSignals({1, 9})) {
        kinds[signal.place.station].insert(signal.kind);
        if (signal.place.area == AREA_IW) {
            ++inputs;
            inputWords.insert({signal.place.station, signal.place.number});
        }
        if (signal.place.area == AREA_IX) {
            EXPECT_EQ(0u, inputWords.count({signal.place.station, signal.place.number / 16}));
        }
    }
    EXPECT_EQ(inputs, inputWords.size());
    for (const int station : {1, 9})
        EXPECT_EQ(std::size_t(SIGNAL_KINDS), kinds[station].size()) << station;
}

TEST(Signals, DemoSignalsAreAtTheirDocumentedPlaces)
{
    using Row = std::tuple<Area, int, SignalKind>;
    std::vector<Row> rows;
    for (const Signal& signal : demoSignals({7})) {
        EXPECT_EQ(7, signal.place.station);
        rows.push_back({signal.place.area, signal.place.number, signal.kind});
    }
    const std::vector<Row> expected = {
        {AREA_IW, 0, SIGNAL_RAMP},       {AREA_IW, 1, SIGNAL_SINE},
        {AREA_IW, 2, SIGNAL_COUNTER},    {AREA_IW, 3, SIGNAL_WALK},
        {AREA_IX, 64, SIGNAL_TOGGLE},    {AREA_IX, 65, SIGNAL_TOGGLE},
        {AREA_IX, 66, SIGNAL_TOGGLE},    {AREA_IX, 67, SIGNAL_TOGGLE},
        {AREA_MW, 3000, SIGNAL_COUNTER}, {AREA_MX, 3160, SIGNAL_TOGGLE},
    };
    EXPECT_EQ(expected, rows);
}

TEST(SignalText, NumbersOfEachAreaHaveTheirLimits)
{
    struct
    {
        const char* area;
        int first;
        int last;
        const char* kind;
    } const rows[] = {
        {"IW", 0, 255, "ramp"},    {"QW", 0, 255, "ramp"},    {"MW", 3000, 7095, "ramp"},
        {"IX", 0, 4095, "toggle"}, {"QX", 0, 4095, "toggle"}, {"MX", 3000, 65535, "toggle"},
    };
    for (const auto& row : rows) {
        const auto trouble = [&row](int number) {
            Signal signal;
            return parseSignal(std::string("1:") + row.area + ":" + std::to_string(number) + ":" +
                                   row.kind,
                               signal);
        };
        EXPECT_EQ("", trouble(row.first)) << row.area;
        EXPECT_EQ("", trouble(row.last)) << row.area;
        EXPECT_NE("", trouble(row.first - 1)) << row.area;
        EXPECT_NE("", trouble(row.last + 1)) << row.area;
    }
}

TEST(SignalText, AllFieldsAreParsed)
{
    Signal signal;
    EXPECT_EQ("", parseSignal("247:MW:3007:sine:2500:300", signal));
    EXPECT_EQ(247, signal.place.station);
    EXPECT_EQ(AREA_MW, signal.place.area);
    EXPECT_EQ(3007, signal.place.number);
    EXPECT_EQ(SIGNAL_SINE, signal.kind);
    EXPECT_EQ(2500, signal.periodMs);
    EXPECT_EQ(300, signal.amplitude);
}

TEST(SignalText, PeriodAndAmplitudeHaveDefaultsByKind)
{
    Signal signal;
    EXPECT_EQ("", parseSignal("1:IW:0:ramp", signal));
    EXPECT_EQ(10000, signal.periodMs);
    EXPECT_EQ(1000, signal.amplitude);
    EXPECT_EQ("", parseSignal("1:QX:2999:toggle:50", signal));
    EXPECT_EQ(50, signal.periodMs);
    EXPECT_EQ(1, signal.amplitude);
}

TEST(SignalText, ErrorNamesTheWrongField)
{
    struct
    {
        const char* text;
        const char* named;
    } const rows[] = {
        {"1:IW:0", "not STATION:AREA"},
        {"1:IW:0:ramp:1:1:1", "not STATION:AREA"},
        {"0:IW:0:ramp", "station '0'"},
        {"248:IW:0:ramp", "station '248'"},
        {"x:IW:0:ramp", "station 'x'"},
        {"1:ZZ:0:ramp", "area 'ZZ'"},
        {"1:QW:256:ramp", "QW number '256'"},
        {"1:MX:2999:toggle", "MX number '2999'"},
        {"1:IW:256:ramp", "IW number '256'"},
        {"1:IW:7x:ramp", "IW number '7x'"},
        {"1:IW:0:wave", "kind 'wave'"},
        {"1:IX:0:ramp", "a bit can only toggle"},
        {"1:IW:0:ramp:0", "period '0'"},
        {"1:IW:0:ramp:", "period ''"},
        {"1:IW:0:ramp:100:65536", "amplitude '65536'"},
        {"1:IW:0:sine:100:32768", "amplitude '32768'"},
    };
    for (const auto& row : rows) {
        Signal signal;
        const std::string trouble = parseSignal(row.text, signal);
        EXPECT_NE(std::string::npos, trouble.find(row.named)) << row.text << ": " << trouble;
        EXPECT_EQ(1, signal.amplitude) << row.text;
    }
}
