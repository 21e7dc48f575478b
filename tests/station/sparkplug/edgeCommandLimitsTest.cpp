// How much of the station the commands of a host can take up.

#include "edgeBench.h"

#include "sparkplug/edgeCommands.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>

namespace {

const QString OVEN = QLatin1String("oven-1");

} // namespace

TEST(EdgeCommandLimits, OutcomesThatNobodyTakesAreBounded)
{
    EdgeMetrics metrics(true);
    RecordedCommands plant;
    EdgeCommands commands(metrics, plant, true);
    for (int i = 0; i < EdgeCommands::MOST_OUTCOMES + 5; ++i)
        commands.refuseMessage(QString::number(i), QString());
    const auto outcomes = commands.takeOutcomes([](const EdgeCommands::Outcome&) { return true; });
    ASSERT_EQ(size_t(EdgeCommands::MOST_OUTCOMES), outcomes.size());
    EXPECT_TRUE(outcomes.front().text.contains(QLatin1String("\"reason\":\"5\"")));
}

TEST(EdgeCommandLimits, OutcomesThatWaitForADeviceAreNotLookedThroughAgain)
{
    EdgeMetrics metrics(true);
    metrics.setDevices(plantDevices());
    RecordedCommands plant;
    EdgeCommands commands(metrics, plant, true);
    const int count = 1000;
    for (int i = 0; i < count; ++i) // nothing is born
        commands.takeOfDevice(OVEN, commandBytes("count", 0, 10, quint64(i)), QString());
    bool isBorn = false;
    int asked = 0;
    const auto canTell = [&](const EdgeCommands::Outcome&) {
        ++asked;
        return isBorn;
    };
    EXPECT_TRUE(commands.takeOutcomes(canTell).empty());
    asked = 0;
    EXPECT_TRUE(commands.takeOutcomes(canTell).empty());
    EXPECT_EQ(1, asked) << "once for the device";
    isBorn = true;
    EXPECT_EQ(size_t(count), commands.takeOutcomes(canTell).size());
    EXPECT_TRUE(commands.takeOutcomes(canTell).empty());
}

TEST(EdgeCommandLimits, OutcomesThatWaitForADeviceStandBeforeItsNextOnesAndAreBounded)
{
    EdgeMetrics metrics(true);
    metrics.setDevices(plantDevices());
    RecordedCommands plant;
    EdgeCommands commands(metrics, plant, true);
    const auto nobody = [](const EdgeCommands::Outcome&) { return false; };
    const auto refuse = [&](const QString& device, const char* metric) {
        commands.takeOfDevice(device, commandBytes(metric, 0, 10, 1), QString());
        EXPECT_TRUE(commands.takeOutcomes(nobody).empty());
    };
    refuse(QLatin1String("mill-1"), "speed");
    for (int i = 0; i < EdgeCommands::MOST_OUTCOMES; ++i)
        refuse(OVEN, i == 0 ? "first" : "count");
    refuse(OVEN, "last");
    const auto all = commands.takeOutcomes([](const EdgeCommands::Outcome&) { return true; });
    ASSERT_EQ(size_t(EdgeCommands::MOST_OUTCOMES), all.size());
    int ofMill = 0;
    for (const EdgeCommands::Outcome& outcome : all) {
        ofMill += outcome.link == QLatin1String("mill") ? 1 : 0;
        EXPECT_FALSE(outcome.text.contains(QLatin1String("first")));
    }
    EXPECT_EQ(1, ofMill) << "who asks often pushes its own outcomes out";
    const bool isOvenLast = all.back().link == QLatin1String("oven");
    EXPECT_TRUE(all[all.size() - (isOvenLast ? 1 : 2)].text.contains(QLatin1String("last")));
}

/// A host may send very many names in a message; each is found without a walk through the device.
TEST(EdgeCommandLimits, AMessageOfManyNamesDoesNotHoldUpALargeDevice)
{
    enum { TAGS = 100000, NAMES = 10000, LIMIT_MS = 4000 };
    EdgeMetrics metrics(true);
    EdgeDevice large{QLatin1String("oven"), 1, {}};
    for (int i = 0; i < TAGS; ++i)
        large.tags.push_back(tagOf(QByteArray("tag" + QByteArray::number(100000 + i)).constData(),
                                   1, Tag::UINT16, Tag::READ_WRITE));
    metrics.setDevices({large});
    metrics.devices()[0].isBorn = true;
    for (EdgeMetric& metric : metrics.devices()[0].metrics)
        metric.isInBirth = true;
    QByteArray payload;
    for (int i = 0; i < NAMES; ++i)
        payload += commandBytes("tag99999x", 0, 10, 1);
    RecordedCommands plant;
    EdgeCommands commands(metrics, plant, true);
    QElapsedTimer timer;
    timer.start();
    commands.takeOfDevice(OVEN, payload, QString());
    EXPECT_LT(timer.elapsed(), LIMIT_MS);
    EXPECT_EQ(quint64(NAMES), commands.refused());
    EXPECT_EQ(size_t(NAMES), plant.refusals.size());
    EXPECT_EQ(QLatin1String("the device's birth has no such metric"), plant.refusals[0].reason);
}
