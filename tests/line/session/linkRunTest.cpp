#include "session/linkRun.h"

#include "builtDriver.h"
#include "plan/typedAddress.h"
#include "session/sharedValues.h"

#include <QProcess>

#include <gtest/gtest.h>

#include <chrono>

// A link without the command line, for a resident program: driver, address, tags and a sink.

namespace {

enum { JOB = 7, VALUE = 1234, NEWS_MS = 20, SECONDS = 30, PROCESS_MS = 10000 };

/// The simulated PLC on a free TCP port.
class NetworkPlc
{
public:
    NetworkPlc()
    {
        m_process.start(QString::fromLatin1(KAKB_SIMULATOR_FILE),
                        {QStringLiteral("--tcp"), QStringLiteral("0")});
        while (!m_process.canReadLine() && m_process.waitForReadyRead(PROCESS_MS)) {
        }
        m_address = QString::fromUtf8(m_process.readLine()).trimmed();
    }
    ~NetworkPlc()
    {
        m_process.terminate();
        m_process.waitForFinished(PROCESS_MS);
    }
    LinkAddress address() const
    {
        return linkAddress(m_address, LinkDefaults());
    }

private:
    QProcess m_process;
    QString m_address;
};

class LinkRunTest : public testing::Test
{
protected:
    LinkRunTest()
        : tags{tagFromAddress(QStringLiteral("MW100"), driver()),
               tagFromAddress(QStringLiteral("QX3.1"), driver())},
          values(tags.size(), false)
    {
    }

    LinkRun::Settings settings(LinkRun::Reading reading) const
    {
        LinkRun::Settings all;
        all.address = plc.address();
        all.reading = reading;
        return all;
    }

    /// Collects the ends of jobs until the condition holds. The time is bounded.
    template <typename Condition> bool await(Condition condition)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(SECONDS);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) return false;
            values.waitForNews(NEWS_MS);
            for (const JobEnd& ended : values.takeNews().jobEnds)
                ends.push_back(ended);
        }
        return true;
    }
    bool areAllGood() const
    {
        for (const TagState& state : values.tags()) {
            if (!state.good) return false;
        }
        return true;
    }

    const NetworkPlc plc;
    const std::vector<Tag> tags;
    SharedValues values;
    std::vector<JobEnd> ends;
};

TEST_F(LinkRunTest, PollsTheTagsAndConfirmsAWrite)
{
    LinkRun run(driver(), settings(LinkRun::CYCLIC), tags, values);
    run.start();
    ASSERT_TRUE(await([this] { return areAllGood(); }));
    ElementWrite write;
    write.station = tags[0].station;
    write.area = tags[0].area;
    write.number = tags[0].number;
    write.bytes.append(char(VALUE & 0xFF)).append(char(VALUE >> 8));
    run.write(JOB, {write});
    ASSERT_TRUE(await([this] { return !ends.empty(); }));
    EXPECT_EQ(JOB, ends.front().job);
    EXPECT_EQ(JobEnd::DONE, ends.front().outcome);
    const qint64 confirmed = run.now();
    ASSERT_TRUE(await([&] { return values.tags()[0].readAt > confirmed; }));
    EXPECT_EQ(write.bytes, values.tags()[0].bytes);
}

TEST_F(LinkRunTest, LimitsTheGapsOfItsRequests)
{
    const std::vector<Tag> apart = {tagFromAddress(QStringLiteral("MW100"), driver()),
                                    tagFromAddress(QStringLiteral("MW104"), driver())};
    for (const LinkRun::Reading reading : {LinkRun::CYCLIC, LinkRun::ON_REQUEST}) {
        LinkRun::Settings some = settings(reading);
        EXPECT_EQ(1u, LinkRun(driver(), some, apart, values).blocks().size());
        some.mostGap = 0;
        EXPECT_EQ(2u, LinkRun(driver(), some, apart, values).blocks().size());
    }
}

TEST_F(LinkRunTest, OnRequestReadsOnlyWhenAsked)
{
    LinkRun run(driver(), settings(LinkRun::ON_REQUEST), tags, values);
    run.start();
    ASSERT_TRUE(await([&] { return values.figures(run.now()).connected; }));
    EXPECT_EQ(-1, values.tags()[0].readAt);
    run.read(JOB, run.blocks());
    ASSERT_TRUE(await([this] { return !ends.empty(); }));
    EXPECT_EQ(JobEnd::DONE, ends.front().outcome);
    EXPECT_TRUE(areAllGood());
}

// 100 ms is the pace of a network, unless the user chooses another pace.
TEST_F(LinkRunTest, EachTagHasItsTurn)
{
    std::vector<Tag> rated = tags;
    ASSERT_TRUE(takeRate(QStringLiteral("10s"), rated[1].rate));
    LinkRun::Settings chosen = settings(LinkRun::CYCLIC);
    {
        LinkRun run(driver(), chosen, rated, values);
        EXPECT_EQ(100000, run.turn(0));
        EXPECT_EQ(10000000, run.turn(1));
    }
    ASSERT_TRUE(takeRate(QStringLiteral("once"), rated[1].rate));
    chosen.paceMs = 2000;
    LinkRun run(driver(), chosen, rated, values);
    EXPECT_EQ(2000000, run.turn(0));
    EXPECT_EQ(std::nullopt, run.turn(1));
}

TEST_F(LinkRunTest, TellsWhyTheLinkCannotBeOpened)
{
    LinkRun::Settings nowhere = settings(LinkRun::CYCLIC);
    nowhere.address.kind = LinkAddress::SERIAL;
    nowhere.address.device = QStringLiteral("/dev/there-is-no-such-port");
    LinkRun run(driver(), nowhere, tags, values);
    run.start();
    ASSERT_TRUE(await([this] { return !values.tags()[0].trouble.isEmpty(); }));
    EXPECT_TRUE(values.tags()[0].trouble.contains(QStringLiteral("/dev/there-is-no-such-port")))
        << values.tags()[0].trouble.toStdString();
    EXPECT_FALSE(values.figures(run.now()).connected);
}

} // namespace
