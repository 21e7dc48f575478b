// Days that nobody thought of: random news of links, brokers and hosts, against a host that knows
// the rules alone. The seed of a failing day is printed with it.

#include "plantHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

enum { DAYS = 80, STEPS = 300 };

EdgeBench::Setup setupOf(unsigned seed)
{
    EdgeBench::Setup setup;
    setup.servers = 1 + int(seed % 3);
    setup.primaryHost = seed % 2 == 0 ? "scada" : "";
    setup.takesCommands = seed % 5 != 0;
    setup.keepsHistory = true;
    return setup;
}

struct TagPlace
{
    const char* link;
    int station;
    const char* tag;
};

const std::vector<TagPlace>& tagPlaces()
{
    static const std::vector<TagPlace> all = {{"oven", 1, "temperature"}, {"oven", 1, "count"},
                                              {"oven", 2, "level"},       {"mill", 1, "speed"},
                                              {"mill", 1, "power"},       {"press", 3, "force"}};
    return all;
}

/// A broker that loses what was in the socket at a cut, links that tell what they like, and a host.
class RandomDay
{
public:
    explicit RandomDay(unsigned seed) : bench(setupOf(seed)), m_random(seed)
    {
        bench.turn();
        if (seed % 2 == 0) hostTime = 1;
    }

    EdgeBench bench;
    PlantHost host;

    void live()
    {
        for (int i = 0; i < STEPS && host.broken.empty(); ++i) {
            step();
            if (isQuiet()) expectSameValues();
        }
        if (host.broken.empty()) heal();
    }

private:
    int draw(int below)
    {
        return int(m_random() % unsigned(below));
    }

    void step()
    {
        switch (draw(16)) {
        case 0:
        case 1:
        case 2:
        case 3:
            return news();
        case 4:
            return stand();
        case 5:
            bench.session.isFull = !bench.session.isFull;
            return void(bench.turn());
        case 6:
            return bench.passMs(draw(1500));
        case 7:
            return bench.commitRows();
        case 8:
            return acknowledge();
        case 9:
            return bench.command("NCMD", QString(), rebirthBytes(draw(4) != 0), draw(8) == 0);
        case 10:
            return draw(4) == 0 ? cut() : bench.passMs(10);
        case 11:
        case 12:
            return goOn();
        case 13:
            return draw(3) == 0 ? tellHost() : bench.passMs(20);
        case 14:
            return draw(3) == 0 ? configure() : command();
        default:
            return gap();
        }
    }

    // The links.

    Sample reading(const TagPlace& place)
    {
        // Counted up, so that their order shows; some are the same again.
        int& value = m_values[place.tag];
        if (draw(6) != 0) ++value;
        const int quality = draw(8);
        return bench.reading(place.link, place.tag, value,
                             quality == 0   ? BAD
                             : quality == 1 ? STALE
                                            : GOOD);
    }

    void news()
    {
        std::vector<Sample> samples;
        for (int i = draw(5); i >= 0; --i) {
            bench.clock.passMs(draw(3));
            samples.push_back(reading(tagPlaces()[size_t(draw(6))]));
            if (draw(6) == 0) samples.push_back(standing());
        }
        bench.take(samples);
    }

    Sample standing()
    {
        const TagPlace& place = tagPlaces()[size_t(draw(6))];
        const bool answers = draw(3) != 0;
        m_answers[{QLatin1String(place.link), place.station}] = answers;
        return bench.standing(place.link, place.station, answers);
    }

    void stand()
    {
        bench.take({standing()});
    }

    /// Rows that found no room in the queue; the last of them did.
    void gap()
    {
        const TagPlace& place = tagPlaces()[size_t(draw(6))];
        Sample gap;
        gap.kind = Sample::GAP;
        for (int i = draw(3); i >= 0; --i)
            gap.number = reading(place).number;
        const Sample last = reading(place);
        bench.take({gap, last});
    }

    void configure()
    {
        std::vector<EdgeDevice> devices = plantDevices();
        m_hasPress = draw(2) == 0;
        if (m_hasPress)
            devices.push_back({QLatin1String("press"), 3, {tagOf("force", 3, Tag::UINT16)}});
        else
            m_answers.erase({QLatin1String("press"), 3});
        if (draw(3) == 0) std::reverse(devices.begin(), devices.end());
        bench.node.setDevices(devices);
        bench.turn();
    }

    // The broker. What it took reaches the host; a cut loses the end of what was not proven.

    void deliver(size_t until)
    {
        for (; m_delivered < until; ++m_delivered)
            host.take(bench.session.told[m_delivered]);
    }

    void acknowledge()
    {
        if (bench.session.state != RecordedSession::OPEN) return;
        deliver(bench.mark());
        bench.acknowledge();
    }

    void lose()
    {
        const size_t end = bench.mark();
        deliver(m_delivered + size_t(draw(int(end - m_delivered) + 1)));
        m_delivered = end;
    }

    void cut()
    {
        if (bench.session.state == RecordedSession::CLOSED) return;
        lose();
        bench.cut(draw(4) != 0);
    }

    void goOn()
    {
        if (bench.session.state == RecordedSession::WAITING) return bench.accept();
        if (bench.session.state != RecordedSession::OPEN) return bench.passMs(2000);
        if (bench.session.subscriptions.empty()) return;
        if (!bench.session.isGranted) bench.grant(draw(10) != 0);
        if (hostTime > 0 && draw(2) == 0) bench.state(true, ++hostTime);
    }

    void tellHost()
    {
        if (hostTime == 0 || bench.session.state != RecordedSession::OPEN) return;
        const bool isOld = draw(4) == 0;
        bench.state(draw(2) == 0, isOld ? hostTime - 1 : ++hostTime);
    }

    void command()
    {
        if (bench.session.state != RecordedSession::OPEN) return;
        bench.command(
            "DCMD", QLatin1String("oven-1"),
            commandBytes(draw(3) == 0 ? "nothing" : "count", 0, 10, quint64(draw(70000))));
        for (const RecordedCommands::Write& write : std::exchange(bench.commands.writes, {}))
            write.ended(WriteEnd());
        bench.turn();
    }

    // What has to be.

    bool isQuiet()
    {
        if (bench.node.standing().state != PlantStanding::BORN || bench.session.isFull)
            return false;
        if (draw(8) != 0) return false; // what the host has not seen yet can be lost
        deliver(bench.mark());
        return true;
    }

    void expectSameValues()
    {
        for (const TagPlace& place : tagPlaces()) {
            const QString id =
                QLatin1String(place.link) + QLatin1Char('-') + QString::number(place.station);
            const PlantHost::DeviceState& device = host.devices[id];
            const auto answers = m_answers.find({QLatin1String(place.link), place.station});
            if (place.station == 3) continue; // what a configuration forgot is not known any more
            if (device.isAlive != (answers != m_answers.end() && answers->second))
                host.broken.push_back("a device lives that is silent, or the other way round");
            if (device.isAlive) expectValue(place, device);
        }
    }

    void expectValue(const TagPlace& place, const PlantHost::DeviceState& device)
    {
        const auto present =
            bench.present.find({QLatin1String(place.link), QLatin1String(place.tag)});
        for (const auto& metric : device.metrics) {
            if (metric.second.name != QLatin1String(place.tag)) continue;
            PlantHost::Value value;
            if (present != bench.present.end()) {
                value.isNull = false;
                value.number = present->second.value;
                value.quality = code(present->second.quality);
            }
            if (!(value == metric.second.value))
                host.broken.push_back(std::string("the host has another value of ") + place.tag);
            return;
        }
        host.broken.push_back(std::string("no metric ") + place.tag);
    }

    /// All comes back, and what is owed flows.
    void heal()
    {
        bench.session.isFull = false;
        for (int i = 0; i < 100 && bench.node.standing().state != PlantStanding::BORN; ++i)
            connectAgain();
        ASSERT_EQ(PlantStanding::BORN, bench.node.standing().state);
        for (const TagPlace& place : tagPlaces())
            bench.stand(place.link, place.station, true);
        bench.commitRows();
        for (int i = 0; i < 100; ++i) {
            bench.passMs(200);
            acknowledge();
        }
        deliver(bench.mark());
        expectAllRows();
    }

    void connectAgain()
    {
        if (bench.session.state == RecordedSession::WAITING) bench.accept();
        if (bench.session.state == RecordedSession::OPEN && !bench.session.isGranted) bench.grant();
        if (hostTime > 0 && bench.session.state == RecordedSession::OPEN)
            bench.state(true, ++hostTime);
        bench.acknowledge();
        bench.passMs(1000);
    }

    /// Each good value that was noted reached the host.
    void expectAllRows()
    {
        std::set<std::pair<QString, double>> seen;
        for (const PlantHost::Row& row : host.rows)
            seen.insert({row.name, row.number});
        for (const Sample& row : bench.log.rows) {
            if (row.quality != GOOD || row.link == QLatin1String("press")) continue;
            if (seen.count({row.tag, row.value}) == 0)
                host.broken.push_back("lost: row " + std::to_string(row.number) + ", " +
                                      row.tag.toStdString());
        }
        expectOrder();
        expectNothingTwice();
    }

    /// In one session no row is told twice, not as history either. Births repeat.
    void expectNothingTwice()
    {
        std::map<std::tuple<QString, double, qint32>, int> noted;
        for (const Sample& row : bench.log.rows)
            ++noted[{row.tag, row.value, code(row.quality)}];
        std::map<std::tuple<int, QString, double, qint32>, int> told;
        for (const PlantHost::Row& row : host.rows) {
            if (row.way == PlantHost::Row::BIRTH) continue;
            const int times = ++told[{row.session, row.name, row.number, row.quality}];
            if (times > noted[{row.name, row.number, row.quality}])
                host.broken.push_back("twice in a session: " + row.name.toStdString());
        }
    }

    static qint32 code(Quality quality)
    {
        return quality == GOOD ? 192 : quality == STALE ? 500 : 0;
    }

    /// Live values of a metric, with those of births, never step back.
    void expectOrder()
    {
        std::map<QString, double> last;
        for (const PlantHost::Row& row : host.rows) {
            if (row.way == PlantHost::Row::HISTORY) continue;
            if (row.number < last[row.name])
                host.broken.push_back("live values of " + row.name.toStdString() + " step back");
            last[row.name] = row.number;
        }
    }

    std::mt19937 m_random;
    size_t m_delivered = 0; ///< of what was told
    qint64 hostTime = 0;    ///< 0: no primary host
    bool m_hasPress = false;
    std::map<std::string, int> m_values;
    std::map<std::pair<QString, int>, bool> m_answers;
};

} // namespace

TEST(EdgeNode, KeepsEveryRuleOnRandomDays)
{
    quint64 births = 0, historical = 0, live = 0;
    for (unsigned seed = 1; seed <= DAYS; ++seed) {
        RandomDay day(seed);
        day.live();
        ASSERT_TRUE(day.host.broken.empty()) << "seed " << seed << ": " << day.host.broken.front();
        births += day.bench.all("NBIRTH").size();
        historical += day.bench.node.standing().historical;
        live += day.bench.node.standing().sent;
    }
    EXPECT_GT(births, quint64(DAYS)) << "the days are too quiet to show anything";
    EXPECT_GT(historical, quint64(DAYS));
    EXPECT_GT(live, quint64(DAYS));
}
