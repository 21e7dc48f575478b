// Links that are lost and return, and peers that are missing or never answer.

#include "fickleServer.h"
#include "links/serialLink.h"
#include "links/tcpLink.h"
#include "pollingHost.h"
#include "processFigures.h"
#include "simulatorProcess.h"

#include <gtest/gtest.h>

#include <QFile>

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>

namespace {

enum {
    LOSSES = 1000,
    FIRST_MEASURED = 100, // by then all permanent memory has been allocated
    MOST_GROWTH_KB = 1024,
    ANSWERS = 3,
    QUICK_PAUSE_MS = 1,
    QUICK_ANSWER_MS = 10,
    FEW_FAILED_OPENINGS = 4
};

using Clock = std::chrono::steady_clock;

LinkThread::OpenLink networkOpener(int port)
{
    return [port] {
        return std::unique_ptr<Link>(new TcpLink(QString::fromLatin1("127.0.0.1"), port));
    };
}

LinkThread::Settings networkSettings(int port)
{
    LinkThread::Settings settings = PollingHost::settings(networkOpener(port), QUICK_ANSWER_MS);
    settings.timing = LineTiming::network();
    settings.firstPauseMs = QUICK_PAUSE_MS;
    return settings;
}

struct Holdings
{
    int descriptors;
    long kilobytesResident;
};

/// Measures while the connection is open and after the tags were read, so that all measurements are
/// alike.
Holdings holdings(PollingHost& host, const FickleServer& server, int connection)
{
    EXPECT_TRUE(host.await([&] {
        host.changes.clear(); // the test's memory must not count as the host's
        return server.connections() >= connection;
    }));
    const qint64 since = host.now();
    EXPECT_TRUE(host.await([&] { return host.allReadSince(since); })) << host.badTags();
    return {openDescriptors(), kilobytes(getpid(), "VmRSS")};
}

int losses(const std::vector<News::LinkEvent>& events)
{
    int count = 0;
    for (const News::LinkEvent& event : events)
        count += event.connected ? 0 : 1;
    return count;
}

/// Whether the events are openings and losses in turn, beginning with an opening.
bool alternate(const std::vector<News::LinkEvent>& events)
{
    for (size_t i = 0; i < events.size(); ++i) {
        if (events[i].connected != (i % 2 == 0)) return false;
    }
    return true;
}

/// The port of a server that has ended, so that no program listens on it.
int deadPort()
{
    return FickleServer(ANSWERS).port();
}

std::string openingFailure(const LinkThread::OpenLink& open)
{
    try {
        open();
    } catch (const LinkError& error) {
        return error.what();
    }
    return "it was opened";
}

} // namespace

TEST(LostLink, RecoversFromAThousandLossesWithoutLeaks)
{
    FickleServer server(ANSWERS);
    server.stayFrom(FIRST_MEASURED + 1);
    PollingHost host(networkSettings(server.port()), tagsFrom({"MW0", "MW100", "QX4.0"}));
    const Holdings early = holdings(host, server, FIRST_MEASURED + 1);
    server.stayFrom(LOSSES + 1);
    const Holdings late = holdings(host, server, LOSSES + 1);
    host.takeNews(0);

    EXPECT_EQ(LOSSES, server.hangUps());
    EXPECT_EQ(LOSSES, losses(host.linkEvents));
    EXPECT_EQ(LOSSES + 1, server.connections());
    EXPECT_TRUE(alternate(host.linkEvents)) << "a loss was told twice, or not at all";
    EXPECT_EQ(early.descriptors, late.descriptors);
    if (!KAKB_SANITIZED) {
        EXPECT_LE(late.kilobytesResident - early.kilobytesResident, MOST_GROWTH_KB);
    }
    std::printf("after %d losses: %d descriptors, %ld kB; after %d: %d, %ld kB\n",
                int(FIRST_MEASURED), early.descriptors, early.kilobytesResident, int(LOSSES),
                late.descriptors, late.kilobytesResident);
}

TEST(LostLink, ShowsCurrentValuesAfterEachReturn)
{
    enum { RETURNS = 20 };
    FickleServer server(ANSWERS);
    server.stayFrom(RETURNS + 1);
    PollingHost host(networkSettings(server.port()), tagsFrom({"MW100"}));
    ASSERT_TRUE(host.await([&] { return server.connections() > RETURNS; }));
    const qint64 since = host.now();
    ASSERT_TRUE(host.await([&] { return host.allReadSince(since); })) << host.badTags();
    for (const News::Change& change : host.changes)
        EXPECT_EQ(elementOf(tagsFrom({"MW100"})[0], FickleServer::REGISTER).bytes,
                  change.state.bytes);
    EXPECT_FALSE(host.changes.empty());
}

TEST(UnpluggedAdapter, IsToldOnceAndQueuedWritesAreDoneAfterItsReturn)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QLatin1String("plc"));
    const std::vector<std::string> arguments = {"--link-path", path.toStdString()};
    const std::vector<Tag> tags = tagsFrom({"MW100", "MW102", "QX4.1"});
    auto plc = std::make_unique<SimulatorProcess>(arguments);
    std::atomic<int> openings{0};
    LinkThread::Settings settings = PollingHost::settings([&openings, path] {
        ++openings;
        return std::unique_ptr<Link>(new SerialLink(path, LineSettings()));
    });
    std::vector<News::LinkEvent> events;
    {
        PollingHost host(settings, tags);
        ASSERT_TRUE(host.await([&] { return host.allReadSince(0); })) << host.badTags();
        plc->kill();
        QFile::remove(path); // a killed PLC leaves it behind, and others may get its terminal
        ASSERT_TRUE(host.await([&] { return losses(host.linkEvents) > 0; }));
        EXPECT_FALSE(host.states()[0].good);
        host.write({elementOf(tags[0], 17), elementOf(tags[1], 18)});
        host.write({elementOf(tags[2], 1)});
        ASSERT_TRUE(host.await([&] { return openings > FEW_FAILED_OPENINGS; }));
        EXPECT_EQ(2, host.ledger.open());

        plc = std::make_unique<SimulatorProcess>(arguments);
        ASSERT_TRUE(host.await([&] { return host.ledger.open() == 0; }));
        const qint64 since = host.now();
        ASSERT_TRUE(host.await([&] { return host.allReadSince(since); })) << host.badTags();
        EXPECT_EQ(2, host.ledger.count(JobEnd::DONE));
        EXPECT_EQ(0, host.ledger.surplusEnds());
        events = host.linkEvents;
    }
    plc->end();
    EXPECT_EQ(3u, events.size());
    EXPECT_TRUE(alternate(events));
    EXPECT_EQ(elementOf(tags[0], 17).bytes, plc->bytesOf(tags[0]));
    EXPECT_EQ(elementOf(tags[1], 18).bytes, plc->bytesOf(tags[1]));
    EXPECT_EQ(elementOf(tags[2], 1).bytes, plc->bytesOf(tags[2]));
}

TEST(PeerThatNeverAnswers, IsASilentStationAndNotALostLink)
{
    FickleServer server(FickleServer::NO_ANSWERS);
    PollingHost host(networkSettings(server.port()), tagsFrom({"MW100"}));
    ASSERT_TRUE(host.await([&] { return !host.states()[0].trouble.isEmpty(); }));
    EXPECT_EQ("station 1 does not answer", host.states()[0].trouble.toStdString());
    EXPECT_GE(host.figures().fences, 2); // only fences are sent to it
    EXPECT_EQ(0, host.figures().exchanges);
    ASSERT_EQ(1u, host.linkEvents.size());
    EXPECT_TRUE(host.linkEvents[0].connected);
    EXPECT_EQ(1, server.connections());
}

TEST(PeerThatNeverAnswers, IsConnectedAnewAfterSomeTime)
{
    FickleServer server(FickleServer::NO_ANSWERS);
    LinkThread::Settings settings = networkSettings(server.port());
    settings.reopensWhenSilent = true;
    PollingHost host(settings, tagsFrom({"MW100"}));
    ASSERT_TRUE(host.await([&] { return server.connections() >= 2; }));
    host.takeNews(0);
    ASSERT_GE(host.linkEvents.size(), 2u);
    EXPECT_FALSE(host.linkEvents[1].connected);
    EXPECT_EQ("no station answers any more; it is connected anew",
              host.linkEvents[1].trouble.toStdString());
}

TEST(MissingPeer, IsToldOnceAndRetriedAfterGrowingPauses)
{
    const int port = deadPort();
    std::atomic<int> openings{0};
    Clock::time_point opened[FEW_FAILED_OPENINGS + 1];
    LinkThread::Settings settings = PollingHost::settings([&, port] {
        if (openings <= FEW_FAILED_OPENINGS) opened[openings] = Clock::now();
        ++openings;
        return networkOpener(port)();
    });
    PollingHost host(settings, tagsFrom({"MW100"}));
    ASSERT_TRUE(host.await([&] { return openings > FEW_FAILED_OPENINGS; }));
    host.takeNews(0);
    std::chrono::milliseconds pause(PollingHost::PAUSE_MS);
    for (int i = 0; i < FEW_FAILED_OPENINGS; ++i, pause *= 2)
        EXPECT_GE(opened[i + 1] - opened[i], pause) << i;
    ASSERT_EQ(1u, host.linkEvents.size());
    EXPECT_FALSE(host.linkEvents[0].connected);
    EXPECT_EQ("127.0.0.1, port " + std::to_string(port) + ": Connection refused",
              host.linkEvents[0].trouble.toStdString());
}

TEST(MissingDevice, IsNamedInOneSentence)
{
    const std::string text = openingFailure([] {
        return std::unique_ptr<Link>(
            new SerialLink(QString::fromLatin1("/dev/no-such-device"), LineSettings()));
    });
    EXPECT_NE(std::string::npos, text.find("no-such-device")) << text;
    EXPECT_NE(std::string::npos, text.find("No such file or directory")) << text;
}
