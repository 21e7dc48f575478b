// Commands of hosts, which may hold anything: each of their metrics has one outcome.

#include "edgeBench.h"

#include "sparkplug/edgeCommands.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>

namespace {

const QString OVEN = QLatin1String("oven-1");

EdgeBench::Setup writing(bool takesCommands)
{
    EdgeBench::Setup setup;
    setup.takesCommands = takesCommands;
    return setup;
}

struct Commanded : EdgeBench
{
    explicit Commanded(bool takesCommands = true) : EdgeBench(writing(takesCommands))
    {
        beBorn();
        stand("oven", 1, true);
        stand("mill", 1, true);
    }

    void write(const QByteArray& payload, bool isRetained = false)
    {
        command("DCMD", OVEN, payload, isRetained);
    }

    quint64 alias(const char* tag) const
    {
        for (const Told& birth : all("DBIRTH")) {
            if (birth.payload.named(tag) != nullptr) return *birth.payload.named(tag)->alias;
        }
        return 0;
    }

    /// Outcomes that were told, with the device that told them.
    std::vector<std::pair<QString, QJsonObject>> outcomes() const
    {
        std::vector<std::pair<QString, QJsonObject>> found;
        for (const Told& told : session.told) {
            if (!told.isData()) continue;
            for (const ReceivedMetric& metric : told.payload.metrics) {
                if (metric.valueField != 15) continue;
                found.emplace_back(told.device,
                                   QJsonDocument::fromJson(metric.text.toUtf8()).object());
            }
        }
        return found;
    }

    void expectRefused(const char* what, const QByteArray& payload)
    {
        const size_t before = commands.refusals.size(), told = outcomes().size();
        write(payload);
        EXPECT_EQ(before + 1, commands.refusals.size()) << what;
        EXPECT_TRUE(commands.writes.empty()) << what;
        EXPECT_EQ(told + 1, outcomes().size()) << what;
        EXPECT_TRUE(session.state == RecordedSession::OPEN) << what;
    }
};

QByteArray twoMetrics()
{
    const QByteArray first = commandBytes("temperature", 0, 12, 0x41A40000); // 20.5
    const QByteArray second = commandBytes("nothing", 0, 10, 1);
    return first + second; // messages that stand one behind the other are one
}

} // namespace

TEST(EdgeCommands, AWriteIsNamedByNameByAliasOrByBoth)
{
    Commanded bench;
    bench.write(commandBytes("count", 0, 10, 12));
    bench.write(commandBytes("", bench.alias("count"), 10, 13));
    bench.write(commandBytes("count", bench.alias("count"), 10, 14));
    ASSERT_EQ(3u, bench.commands.writes.size());
    for (int i = 0; i < 3; ++i) {
        const RecordedCommands::Write& write = bench.commands.writes[size_t(i)];
        EXPECT_EQ(QLatin1String("oven"), write.link);
        EXPECT_EQ(QLatin1String("count"), write.tag);
        EXPECT_EQ(MetricValue(qint64(12 + i)), write.value);
        EXPECT_EQ(QLatin1String("mqtt://broker1:1883 spBv1.0/works/DCMD/station/oven-1"),
                  write.from);
    }
    EXPECT_TRUE(bench.commands.refusals.empty());
    EXPECT_EQ(3u, bench.node.standing().commands);
}

TEST(EdgeCommands, TheEndOfAWriteIsToldByItsDevice)
{
    Commanded bench;
    bench.write(commandBytes("count", 0, 10, 12));
    EXPECT_TRUE(bench.outcomes().empty()) << "not before it ended";
    bench.commands.end(0, WriteEnd::CONFIRMED, QByteArray("\x0C\x00", 2));
    bench.turn();
    const auto outcomes = bench.outcomes();
    ASSERT_EQ(1u, outcomes.size());
    EXPECT_EQ(OVEN, outcomes[0].first);
    EXPECT_EQ(1, outcomes[0].second[QLatin1String("id")].toInt());
    EXPECT_EQ(QLatin1String("count"), outcomes[0].second[QLatin1String("metric")].toString());
    EXPECT_EQ(QLatin1String("confirmed"), outcomes[0].second[QLatin1String("outcome")].toString());
    EXPECT_TRUE(outcomes[0].second[QLatin1String("reason")].isNull());
    EXPECT_EQ(12, outcomes[0].second[QLatin1String("value")].toInt());
    EXPECT_EQ(0u, bench.node.standing().refusedCommands);
}

TEST(EdgeCommands, ThatThePlcRefusesAreCountedAsRefused)
{
    Commanded bench;
    bench.write(commandBytes("count", 0, 10, 12));
    bench.write(commandBytes("count", 0, 10, 13));
    bench.commands.end(0, WriteEnd::REFUSED, QByteArray(), "the PLC said no");
    bench.commands.end(1, WriteEnd::FAILED, QByteArray(), "no answer");
    bench.turn();
    const auto outcomes = bench.outcomes();
    ASSERT_EQ(2u, outcomes.size());
    EXPECT_EQ(QLatin1String("the PLC said no"),
              outcomes[0].second[QLatin1String("reason")].toString());
    EXPECT_EQ(1u, bench.node.standing().refusedCommands);
    EXPECT_EQ(2u, bench.node.standing().commands);
}

TEST(EdgeCommands, TheEndOfAWriteToADeviceThatDiedIsToldBehindItsBirth)
{
    Commanded bench;
    bench.write(commandBytes("count", 0, 10, 12));
    bench.stand("oven", 1, false);
    bench.commands.end(0, WriteEnd::FAILED);
    bench.passMs(3000);
    EXPECT_TRUE(bench.outcomes().empty());
    bench.stand("oven", 1, true);
    bench.turn();
    ASSERT_EQ(1u, bench.outcomes().size());
    EXPECT_EQ(QLatin1String("failed"),
              bench.outcomes()[0].second[QLatin1String("outcome")].toString());
}

TEST(EdgeCommands, AnEndBehindTheEndOfTheNodeHarmsNothing)
{
    RecordedCommands commands;
    {
        Commanded bench;
        bench.write(commandBytes("count", 0, 10, 12));
        commands = bench.commands;
    }
    commands.end(0, WriteEnd::CONFIRMED, QByteArray("\x0C\x00", 2));
}

TEST(EdgeCommands, WhatDoesNotFitIsRefusedWithOneOutcomeEach)
{
    Commanded bench;
    bench.expectRefused("unknown name", commandBytes("nothing", 0, 10, 1));
    bench.expectRefused("another case", commandBytes("Count", 0, 10, 1));
    bench.expectRefused("unknown alias", commandBytes("", 9999, 10, 1));
    bench.expectRefused("an alias of another device",
                        commandBytes("", bench.alias("speed"), 10, 1));
    bench.expectRefused("name and alias of two metrics",
                        commandBytes("count", bench.alias("temperature"), 10, 1));
    bench.expectRefused("neither name nor alias", commandBytes("", 0, 10, 1));
    bench.expectRefused("no value", commandBytes("count", 0, 0, 0));
    bench.expectRefused("null", commandBytes("count", 0, 7, 1));
    bench.expectRefused("another field", commandBytes("count", 0, 14, 1));
    bench.expectRefused("out of range", commandBytes("count", 0, 10, 65536));
    bench.expectRefused("read only", commandBytes("door", 0, 14, 1));
    bench.expectRefused("the station's own metric", commandBytes("Commands/Outcome", 0, 10, 1));
    bench.expectRefused("broken", QByteArray("\xFF\xFF\xFF"));
    bench.expectRefused("empty", QByteArray());
    for (const auto& outcome : bench.outcomes()) {
        EXPECT_EQ(QLatin1String("refused"), outcome.second[QLatin1String("outcome")].toString());
        EXPECT_FALSE(outcome.second[QLatin1String("reason")].toString().isEmpty());
    }
    EXPECT_EQ(14u, bench.node.standing().refusedCommands);
}

TEST(EdgeCommands, SeveralMetricsOfAMessageHaveAnOutcomeEach)
{
    Commanded bench;
    bench.write(twoMetrics());
    ASSERT_EQ(1u, bench.commands.writes.size());
    EXPECT_EQ(MetricValue(20.5F), bench.commands.writes[0].value);
    EXPECT_EQ(1u, bench.commands.refusals.size());
    EXPECT_EQ(2u, bench.node.standing().commands);
}

TEST(EdgeCommands, ARetainedCommandIsNeverExecuted)
{
    Commanded bench;
    bench.write(commandBytes("count", 0, 10, 12), true);
    EXPECT_TRUE(bench.commands.writes.empty());
    ASSERT_EQ(1u, bench.commands.refusals.size());
    EXPECT_EQ(QLatin1String("it was retained"), bench.commands.refusals[0].reason);
}

TEST(EdgeCommands, AnUnknownDeviceAndAStrangeTopicAreRefused)
{
    Commanded bench;
    bench.command("DCMD", QLatin1String("press-1"), commandBytes("count", 0, 10, 12));
    bench.command("DCMD", QLatin1String("oven-1/deeper"), commandBytes("count", 0, 10, 12));
    bench.command("NCMD", OVEN, commandBytes("count", 0, 10, 12));
    bench.session.send(QLatin1String("spBv1.0/works/DCMD/other/oven-1"),
                       commandBytes("count", 0, 10, 12));
    EXPECT_TRUE(bench.commands.writes.empty());
    EXPECT_EQ(4u, bench.commands.refusals.size());
    EXPECT_TRUE(bench.session.state == RecordedSession::OPEN);
}

TEST(EdgeCommands, ADeadDeviceTakesNone)
{
    Commanded bench;
    bench.stand("oven", 1, false);
    bench.write(commandBytes("count", 0, 10, 12));
    EXPECT_TRUE(bench.commands.writes.empty());
    EXPECT_EQ(1u, bench.commands.refusals.size());

    bench.session.isFull = true; // it dies among the births that are asked for
    bench.stand("mill", 1, false);
    bench.command("NCMD", QString(), rebirthBytes());
    bench.session.isFull = false;
    bench.turn();
    bench.command("DCMD", QLatin1String("mill-1"), commandBytes("speed", 0, 10, 1));
    EXPECT_TRUE(bench.commands.writes.empty());
    EXPECT_EQ(2u, bench.commands.refusals.size());
}

TEST(EdgeCommands, AreTakenForTheLastBirthsThatWereSent)
{
    Commanded bench;
    const quint64 gone = bench.alias("count");
    std::vector<EdgeDevice> devices = plantDevices();
    devices[0].tags.pop_back();
    devices[0].tags.push_back(tagOf("fan", 1, Tag::UINT16, Tag::READ_WRITE));
    bench.session.isFull = true; // the new births wait
    bench.node.setDevices(devices);
    bench.write(commandBytes("fan", 0, 10, 1));
    bench.write(commandBytes("", gone, 10, 1));
    EXPECT_TRUE(bench.commands.writes.empty());
    bench.session.isFull = false;
    bench.turn();
    bench.write(commandBytes("fan", 0, 10, 1));
    EXPECT_EQ(1u, bench.commands.writes.size());
    bench.write(commandBytes("", gone, 10, 1));
    EXPECT_EQ(1u, bench.commands.writes.size()) << "an alias is never given to another";
}

/// Ids are made of the links' names in their order: the same two ids may change places.
TEST(EdgeCommands, ADeviceWhoseIdIsAnotherNowTakesNoneOfItsOldBirth)
{
    const auto tags = [] {
        return std::vector<Tag>{tagOf("count", 1, Tag::UINT16, Tag::READ_WRITE)};
    };
    const EdgeDevice first{QLatin1String("a+b"), 1, tags()},
        second{QLatin1String("a#b"), 1, tags()};
    EdgeBench bench;
    bench.node.setDevices({first, second});
    bench.beBorn();
    bench.stand("a+b", 1, true);
    bench.stand("a#b", 1, true);
    bench.session.isFull = true; // the new births wait
    bench.node.setDevices({second, first});
    bench.command("DCMD", QLatin1String("a_b-1"), commandBytes("count", 0, 10, 1));
    EXPECT_TRUE(bench.commands.writes.empty()) << "it was meant for a+b";
    EXPECT_EQ(1u, bench.commands.refusals.size());
    bench.session.isFull = false;
    bench.turn();
    bench.command("DCMD", QLatin1String("a_b-1"), commandBytes("count", 0, 10, 2));
    ASSERT_EQ(1u, bench.commands.writes.size());
    EXPECT_EQ(QLatin1String("a#b"), bench.commands.writes[0].link);
}

TEST(EdgeCommands, TheEndOfAWriteToADeviceThatTakesNoneAnyMoreIsToldByTheNode)
{
    Commanded bench;
    bench.write(commandBytes("count", 0, 10, 12));
    bench.stand("oven", 1, false);
    std::vector<EdgeDevice> devices = plantDevices();
    for (Tag& tag : devices[0].tags)
        tag.access = Tag::READ_ONLY;
    bench.node.setDevices(devices);
    bench.commands.end(0, WriteEnd::FAILED);
    bench.turn();
    ASSERT_EQ(1u, bench.outcomes().size()) << "it does not wait for a device that never tells it";
    EXPECT_EQ(QString(), bench.outcomes()[0].first);
}

TEST(EdgeCommands, WithoutConsentNothingIsWrittenAndBirthsCanStillBeAskedFor)
{
    Commanded bench(false);
    bench.write(commandBytes("count", 0, 10, 12));
    EXPECT_TRUE(bench.commands.writes.empty());
    EXPECT_EQ(1u, bench.commands.refusals.size());
    for (const Told& birth : bench.all("NBIRTH"))
        EXPECT_EQ(nullptr, birth.payload.named("Commands/Outcome"));
    for (const Told& birth : bench.all("DBIRTH"))
        EXPECT_EQ(nullptr, birth.payload.named("Commands/Outcome"));
    EXPECT_TRUE(bench.outcomes().empty());
    bench.command("NCMD", QString(), rebirthBytes());
    EXPECT_EQ(2u, bench.all("NBIRTH").size());
}
