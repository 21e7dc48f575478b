// Each command has one outcome, whatever its device, the broker and the configuration do meanwhile.

#include "edgeBench.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonObject>

#include <map>
#include <random>

namespace {

enum { DAYS = 20, STEPS = 200 };

/// Writes end in any order, late or at once.
class CommandedDay : public EdgeBench
{
public:
    explicit CommandedDay(unsigned seed) : m_random(seed)
    {
        turn();
    }

    void live()
    {
        for (int i = 0; i < STEPS; ++i)
            step();
    }

    /// The station ends in a session, with nothing under way.
    void end()
    {
        session.isFull = false;
        for (int i = 0; i < 50 && node.standing().state != PlantStanding::BORN; ++i)
            goOn();
        turn();
        while (m_ended < commands.writes.size())
            endWrite();
        node.leave();
        acknowledge();
    }

    /// How often the outcomes were told in data: of each write by its number, of refusals by 0.
    std::map<int, int> told() const
    {
        std::map<int, int> times;
        for (const Told& told : session.told) {
            if (!told.isData()) continue;
            for (const ReceivedMetric& metric : told.payload.metrics) {
                if (metric.valueField != 15) continue;
                const auto outcome = QJsonDocument::fromJson(metric.text.toUtf8()).object();
                ++times[outcome[QLatin1String("id")].toInt()];
            }
        }
        return times;
    }

private:
    int draw(int below)
    {
        return int(m_random() % unsigned(below));
    }

    void step()
    {
        switch (draw(10)) {
        case 0:
            return stand(draw(2) == 0 ? "oven" : "mill", 1, draw(3) != 0);
        case 1:
            session.isFull = !session.isFull;
            return void(turn());
        case 2:
            return draw(3) == 0 && session.state != RecordedSession::CLOSED ? cut() : passMs(300);
        case 3:
            return draw(3) == 0 ? configure() : passMs(1100);
        case 4:
            return command("NCMD", QString(), rebirthBytes());
        case 5:
            return goOn();
        case 6:
            return endWrite();
        default:
            return ask();
        }
    }

    void goOn()
    {
        if (session.state == RecordedSession::WAITING) return accept();
        if (session.state == RecordedSession::OPEN && !session.isGranted) return grant();
        passMs(2000);
    }

    /// Some devices go, and some take no commands any more.
    void configure()
    {
        std::vector<EdgeDevice> devices = ::plantDevices();
        if (draw(2) == 0) devices.pop_back();
        for (EdgeDevice& device : devices) {
            if (draw(2) == 0) continue;
            for (Tag& tag : device.tags)
                tag.access = Tag::READ_ONLY;
        }
        node.setDevices(devices);
        turn();
    }

    void ask()
    {
        if (session.state != RecordedSession::OPEN) return;
        static const char* const devices[] = {"oven-1", "mill-1", "press-9"};
        static const char* const names[] = {"count", "speed", "nothing"};
        command("DCMD", QLatin1String(devices[draw(3)]), commandBytes(names[draw(3)], 0, 10, 5));
    }

    void endWrite()
    {
        if (m_ended == commands.writes.size()) return;
        commands.end(m_ended++, draw(2) == 0 ? WriteEnd::CONFIRMED : WriteEnd::FAILED);
        turn();
    }

    std::mt19937 m_random;
    size_t m_ended = 0; ///< writes
};

} // namespace

TEST(EdgeOutcomes, EachCommandHasOneThatIsToldUpToTheEnd)
{
    size_t writes = 0;
    for (unsigned seed = 1; seed <= DAYS; ++seed) {
        CommandedDay day(seed);
        day.live();
        day.end();
        ASSERT_TRUE(day.node.isOver()) << "seed " << seed;
        std::map<int, int> told = day.told();
        EXPECT_EQ(int(day.commands.refusals.size()), told[0]) << "refusals, seed " << seed;
        told.erase(0);
        EXPECT_EQ(day.commands.writes.size(), told.size()) << "writes, seed " << seed;
        for (const auto& [id, times] : told)
            EXPECT_EQ(1, times) << "write " << id << ", seed " << seed;
        writes += told.size();
    }
    EXPECT_GT(writes, size_t(DAYS)) << "the days are too quiet to show anything";
}
