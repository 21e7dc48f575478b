#include "machine/machineTest.h"

#include <QTcpServer>

// Links come and go, and none costs another a poll.

namespace {

/// A peer that takes connections and never answers.
class MutePeer
{
public:
    MutePeer()
    {
        m_server.listen(QHostAddress::LocalHost);
    }
    QString link() const
    {
        return QLatin1String("tcp:127.0.0.1,") + QString::number(m_server.serverPort());
    }

private:
    QTcpServer m_server; ///< the system takes the connections by itself
};

} // namespace

class StationLinksTest : public MachineTest
{
protected:
    StationLinksTest() : links(surroundings) {}

    LinkConfig named(const char* name, const QString& link)
    {
        LinkConfig one = config(link, tags({"MW100", "MX400.3"}));
        one.name = QLatin1String(name);
        return one;
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> all;
        for (const std::shared_ptr<MachineLink>& link : links.all())
            all.push_back(link->name().toStdString());
        return all;
    }

    bool becomesGood(const char* name)
    {
        return news.await([&] { return areAllGood(*links.find(QLatin1String(name))); });
    }

    StationLinks links;
};

TEST_F(StationLinksTest, AreInTheOrderOfTheConfiguration)
{
    const QString nowhere = QLatin1String("tcp:127.0.0.1,1");
    links.apply({named("b", nowhere), named("a", nowhere)});
    EXPECT_EQ((std::vector<std::string>{"b", "a"}), names());
    links.apply({named("c", nowhere), named("a", nowhere), named("b", nowhere)});
    EXPECT_EQ((std::vector<std::string>{"c", "a", "b"}), names());
    links.apply({});
    EXPECT_TRUE(names().empty());
    EXPECT_EQ(nullptr, links.find(QLatin1String("a")));
}

TEST_F(StationLinksTest, ThatDidNotChangeGoOn)
{
    ControlledPlc first;
    ControlledPlc second;
    links.apply({named("kept", first.link()), named("changed", second.link())});
    ASSERT_TRUE(becomesGood("kept"));
    ASSERT_TRUE(becomesGood("changed"));
    const auto kept = links.find(QLatin1String("kept"));
    const auto changed = links.find(QLatin1String("changed"));
    const qint64 since = kept->values().state().since;
    LinkConfig other = named("changed", second.link());
    other.timeoutMs += 1;
    links.apply({other, named("kept", first.link())});
    EXPECT_EQ(kept, links.find(QLatin1String("kept")));
    EXPECT_NE(changed, links.find(QLatin1String("changed")));
    const qint64 time = kept->values().reading(0).time;
    EXPECT_TRUE(news.await([&] { return kept->values().reading(0).time > time; }));
    EXPECT_EQ(since, kept->values().state().since);
    EXPECT_TRUE(becomesGood("changed"));
    EXPECT_EQ("failed: not sent: the link's configuration was changed or taken out",
              summaryOf(write(*changed, 0, "1")));
}

TEST_F(StationLinksTest, ThatAreTakenOutKeepNoGoodValue)
{
    ControlledPlc plc;
    LinkConfig config = named("gone", plc.link());
    std::vector<Tag> once = config.tags.all();
    once[0].rate.kind = ReadRate::ONCE; // its value never gets too old
    config.tags = once;
    links.apply({config});
    ASSERT_TRUE(becomesGood("gone"));
    const auto gone = links.find(QLatin1String("gone"));
    const std::vector<TagReading> before = gone->values().readings();
    links.apply({});
    const std::string why = "the link's configuration was changed or taken out";
    EXPECT_EQ(LINK_LOST, gone->values().state().standing);
    EXPECT_EQ(why, gone->values().state().trouble.toStdString());
    for (size_t tag = 0; tag < before.size(); ++tag) {
        const TagReading after = gone->values().reading(int(tag));
        EXPECT_EQ(BAD, after.quality);
        EXPECT_EQ(why, after.trouble.toStdString());
        EXPECT_EQ(before[tag].bytes, after.bytes);
    }
}

TEST_F(StationLinksTest, ThatNeverRanTellNothing)
{
    ControlledPlc plc;
    links.apply({named("kept", plc.link())});
    ASSERT_TRUE(becomesGood("kept"));
    const quint64 last = events.lastId();
    LinkConfig changed = named("kept", plc.link());
    changed.timeoutMs += 1;
    EXPECT_THROW(links.apply({changed, named("bad", QLatin1String("what:"))}), LinkTextError);
    EXPECT_EQ(last, events.lastId());
}

TEST_F(StationLinksTest, StayAsTheyAreWhenAConfigurationIsBad)
{
    ControlledPlc plc;
    links.apply({named("kept", plc.link())});
    ASSERT_TRUE(becomesGood("kept"));
    const auto kept = links.find(QLatin1String("kept"));
    EXPECT_THROW(links.apply({named("new", plc.link()), named("bad", QLatin1String("what:"))}),
                 LinkTextError);
    EXPECT_EQ((std::vector<std::string>{"kept"}), names());
    EXPECT_EQ(kept, links.find(QLatin1String("kept")));
    EXPECT_EQ("confirmed", summaryOf(write(*kept, 0, "1")));
}

TEST_F(StationLinksTest, ThatTheSystemCannotServeAreLostAndSayWhy)
{
    const LinkSurroundings missing = {
        clock, events, {&news}, QLatin1String("/nowhere/driver.so"), QString()};
    StationLinks lost(missing);
    lost.apply({named("plc", QLatin1String("tcp:127.0.0.1,1"))});
    const auto link = lost.find(QLatin1String("plc"));
    EXPECT_FALSE(link->canRun());
    EXPECT_EQ(LINK_LOST, link->values().state().standing);
    EXPECT_EQ("/nowhere/driver.so: No such file or directory",
              link->values().state().trouble.toStdString());
    EXPECT_EQ(BAD, link->values().reading(0).quality);
    EXPECT_EQ("failed: not sent: /nowhere/driver.so: No such file or directory",
              summaryOf(write(*link, 0, "1")));
}

TEST_F(StationLinksTest, WithoutASimulatorAreLostAndSayWhy)
{
    const LinkSurroundings missing = {clock,
                                      events,
                                      {&news},
                                      QString::fromUtf8(KAKB_DRIVER_FILE),
                                      QLatin1String("/nowhere/simulator")};
    StationLinks lost(missing);
    lost.apply({named("plc", QLatin1String("sim"))});
    EXPECT_EQ("/nowhere/simulator: it does not start, or ended at once",
              lost.find(QLatin1String("plc"))->values().state().trouble.toStdString());
}

TEST_F(StationLinksTest, ToTheSimulatedPlcServeTheirTags)
{
    links.apply({named("plc", QLatin1String("sim"))});
    EXPECT_TRUE(becomesGood("plc"));
    EXPECT_EQ("confirmed", summaryOf(write(*links.find(QLatin1String("plc")), 0, "1")));
}

// The good link polls every 20 ms, and the other two are in trouble all the time. A busy machine
// makes single polls late, so the best of some rounds counts.
TEST_F(StationLinksTest, InTroubleCostNoOtherAPoll)
{
    enum : qint64 { LONGEST_GAP_MS = 500 };
    enum { POLLS = 50, ROUNDS = 5 };
    ControlledPlc plc;
    const MutePeer mute;
    links.apply({named("mute", mute.link()), named("good", plc.link()),
                 named("closed", QLatin1String("tcp:127.0.0.1,1"))});
    ASSERT_TRUE(becomesGood("good"));
    const auto good = links.find(QLatin1String("good"));
    const auto isInTrouble = [this](const char* name, LinkStanding standing) {
        const LinkValues& values = links.find(QLatin1String(name))->values();
        return values.state().standing == standing && values.reading(0).quality == BAD;
    };
    ASSERT_TRUE(news.await(
        [&] { return isInTrouble("mute", LINK_UP) && isInTrouble("closed", LINK_LOST); }));
    qint64 best = LONGEST_GAP_MS;
    for (int round = 0; round < ROUNDS && best >= LONGEST_GAP_MS; ++round) {
        std::set<qint64> times;
        qint64 longest = 0;
        ASSERT_TRUE(news.await([&] {
            const TagReading reading = good->values().reading(0);
            if (!times.empty()) longest = std::max(longest, reading.time - *times.rbegin());
            times.insert(reading.time);
            EXPECT_EQ(GOOD, reading.quality);
            return times.size() >= POLLS;
        }));
        best = std::min(best, longest);
    }
    EXPECT_LT(best, LONGEST_GAP_MS) << "ms between two polls";
}

TEST_F(StationLinksTest, AHundredEndQuickly)
{
    enum { LINKS = 100 };
    const MutePeer mute;
    std::vector<LinkConfig> configs;
    for (int i = 0; i < LINKS; ++i)
        configs.push_back(named(("link" + std::to_string(i)).c_str(), mute.link()));
    links.apply(configs);
    const auto begin = std::chrono::steady_clock::now();
    links.apply({});
    const auto taken = std::chrono::steady_clock::now() - begin;
    EXPECT_LT(taken, std::chrono::seconds(3));
}
