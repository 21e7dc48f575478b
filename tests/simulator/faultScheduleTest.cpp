#include "faultSchedule.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

const int DRAWS = 100000;

std::array<int, FAULT_KINDS + 1> counted(const FaultRates& rates, unsigned seed)
{
    FaultSchedule schedule(rates, seed, 0);
    std::array<int, FAULT_KINDS + 1> counts = {};
    for (int i = 0; i < DRAWS; ++i)
        ++counts[schedule.next()];
    return counts;
}

} // namespace

TEST(FaultSchedule, WithoutRatesThereIsNoFault)
{
    EXPECT_EQ(DRAWS, counted({}, 1)[NO_FAULT]);
}

TEST(FaultSchedule, RateOneHitsEveryExchange)
{
    for (std::size_t kind = 0; kind < FAULT_KINDS; ++kind) {
        FaultRates rates = {};
        rates[kind] = 1;
        EXPECT_EQ(DRAWS, counted(rates, 1)[kind]) << kind;
    }
}

TEST(FaultSchedule, EachKindComesAsOftenAsItsRate)
{
    FaultRates rates = {};
    for (std::size_t kind = 0; kind < FAULT_KINDS; ++kind)
        rates[kind] = 0.01 * double(kind + 1); // 0.55 together
    const std::array<int, FAULT_KINDS + 1> counts = counted(rates, 7);
    // Five standard deviations of the widest binomial, sqrt(100000 * 0.1 * 0.9) = 95
    for (std::size_t kind = 0; kind < FAULT_KINDS; ++kind)
        EXPECT_NEAR(rates[kind] * DRAWS, counts[kind], 475) << kind;
    EXPECT_NEAR(0.45 * DRAWS, counts[NO_FAULT], 787); // sqrt(100000 * 0.45 * 0.55) = 157
}

TEST(FaultSchedule, TheSeedDecidesTheOrder)
{
    FaultRates rates = {};
    rates.fill(0.1);
    FaultSchedule first(rates, 3, 0);
    FaultSchedule same(rates, 3, 0);
    FaultSchedule other(rates, 4, 0);
    int differences = 0;
    for (int i = 0; i < 1000; ++i) {
        const Fault fault = first.next();
        EXPECT_EQ(fault, same.next()) << i;
        if (fault != other.next()) ++differences;
    }
    EXPECT_GT(differences, 500);
}

TEST(FaultSchedule, NoFaultAfterTheFaultExchanges)
{
    FaultRates rates = {};
    rates[FAULT_CORRUPT] = 1;
    FaultSchedule schedule(rates, 1, 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(FAULT_CORRUPT, schedule.next()) << i;
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(NO_FAULT, schedule.next()) << i;
}

TEST(FaultSchedule, AShareOfRepliesIsLateByUpToTheLongestTime)
{
    FaultSchedule schedule({}, 1, 0);
    int late = 0;
    int early = 0;
    for (int i = 0; i < DRAWS; ++i) {
        const std::optional<std::int64_t> lateness = schedule.lateness(0.2, 1000);
        if (!lateness) continue;
        ++late;
        if (*lateness < 250) ++early;
        ASSERT_GE(*lateness, 0);
        ASSERT_LE(*lateness, 1000);
    }
    EXPECT_NEAR(0.2 * DRAWS, late, 632);   // sqrt(100000 * 0.2 * 0.8) = 126
    EXPECT_NEAR(0.05 * DRAWS, early, 345); // sqrt(100000 * 0.05 * 0.95) = 69
    EXPECT_FALSE(schedule.lateness(0, 1000));
}

TEST(FaultSchedule, LatenessAndSilenceDoNotShiftOtherFaults)
{
    FaultRates rates = {};
    rates.fill(0.09);
    FaultSchedule alone(rates, 3, 0);
    FaultSchedule beside(rates, 3, 0);
    for (int i = 0; i < 1000; ++i) {
        beside.lateness(0.5, 1000);
        beside.isSilent(0.5);
        ASSERT_EQ(alone.next(), beside.next()) << i;
    }
}

TEST(FaultSchedule, NoLatenessAfterTheFaultExchanges)
{
    FaultSchedule schedule({}, 1, 1);
    EXPECT_TRUE(schedule.lateness(1, 1000));
    schedule.next();
    EXPECT_FALSE(schedule.lateness(1, 1000));
}

TEST(FaultSchedule, EveryKindHasItsOwnName)
{
    std::set<std::string> names;
    for (int kind = 0; kind <= FAULT_KINDS; ++kind)
        names.insert(faultName(static_cast<Fault>(kind)));
    EXPECT_EQ(std::size_t(FAULT_KINDS) + 1, names.size());
}
