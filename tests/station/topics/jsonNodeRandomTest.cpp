#include "topics/jsonNodeRoom.h"

#include "plan/tagValue.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <map>
#include <random>
#include <set>

// A subscriber that sees everything that the broker keeps must end with what the links told last,
// whatever was cut, dropped and changed on the way.

namespace {

/// A tag of a configuration, with the topic that it must have.
struct PlacedTag
{
    const char* link;
    int station;
    const char* name;
    Tag::Type type;
    const char* topic;
};

using Plant = std::vector<PlacedTag>;

const std::vector<Plant> PLANTS = {
    {{"left", 1, "level", Tag::FLOAT32, "left/level"},
     {"left", 1, "count", Tag::UINT16, "left/count"},
     {"left", 2, "a/b", Tag::BOOL, "left/a_b"},
     {"right", 1, "level", Tag::INT16, "right/level"}},
    {{"left", 1, "level", Tag::FLOAT32, "left/level"},
     {"left", 2, "a_b", Tag::INT16, "left/a_b"},
     {"left", 2, "a/b", Tag::BOOL, "left/a_b-2"}},
    {{"right", 1, "Level", Tag::INT16, "right/Level"},
     {"right", 1, "level", Tag::INT16, "right/level-2"},
     {"right", 3, "count", Tag::UINT32, "right/count"}},
    {{"left", 1, "count", Tag::UINT16, "left/count"},
     {"right", 1, "level", Tag::FLOAT32, "right/level"}},
};

std::vector<EdgeDevice> devicesOf(const Plant& plant)
{
    std::vector<EdgeDevice> devices;
    for (const PlacedTag& placed : plant) {
        Tag tag;
        tag.name = QString::fromUtf8(placed.name);
        tag.type = placed.type;
        tag.station = placed.station;
        tag.access = Tag::READ_WRITE;
        const QString link = QString::fromUtf8(placed.link);
        if (devices.empty() || devices.back().link != link ||
            devices.back().station != placed.station)
            devices.push_back({link, placed.station, {}});
        devices.back().tags.push_back(tag);
    }
    return devices;
}

using Place = std::pair<std::string, std::string>; ///< link, and tag or station

/// What must be true of the topics at last, worked out from what was told.
class Expected
{
public:
    void configure(const Plant& next)
    {
        const std::map<Place, std::string> tags = std::exchange(m_tags, {});
        const std::map<Place, bool> good = std::exchange(m_isGood, {});
        const auto stations = std::exchange(m_stations, {});
        const std::set<Place> before = std::exchange(m_known, {});
        const std::set<Place> retyped = retypedTags(next);
        for (const PlacedTag& placed : next) {
            const Place station(placed.link, std::to_string(placed.station));
            if (stations.count(station) != 0 && m_stations.count(station) == 0)
                m_stations[station] = stations.at(station);
            m_stations[station];
        }
        for (const PlacedTag& placed : next) {
            const Place tag(placed.link, placed.name);
            m_known.insert(tag);
            if (tags.count(tag) == 0 || retyped.count(tag) != 0) continue;
            m_tags[tag] = tags.at(tag);
            m_isGood[tag] = good.at(tag);
            const Place station(placed.link, std::to_string(placed.station));
            if (before.count(tag) == 0 && good.at(tag)) m_stations[station].wasGood = true;
        }
        m_plant = next;
    }

    /// @param value  JSON; empty: none
    void reading(const Place& tag, const std::string& value, Quality quality, qint64 time)
    {
        const std::string text = "\"v\":" + value + ",\"q\":\"" + qualityText(quality) + "\"";
        std::string& state = m_tags[tag];
        if (state.find(text) == std::string::npos)
            state = "{" + text + ",\"t\":" + std::to_string(time) + "}";
        m_isGood[tag] = quality == GOOD;
        for (const PlacedTag& placed : m_plant) {
            const bool isIt = tag == Place(placed.link, placed.name);
            if (isIt && quality == GOOD)
                m_stations[{placed.link, std::to_string(placed.station)}].wasGood = true;
        }
    }

    void standing(const Place& station, bool answers)
    {
        m_stations[station].answers = answers;
        if (!answers) m_stations[station].wasGood = false;
    }

    std::map<std::string, std::string> topics() const
    {
        std::map<std::string, std::string> all{{"status", "online"}};
        for (const PlacedTag& placed : m_plant) {
            const auto state = m_tags.find({placed.link, placed.name});
            all[placed.topic] =
                state == m_tags.end() ? R"({"v":null,"q":"bad","t":null})" : state->second;
            const Standing& station = m_stations.at({placed.link, std::to_string(placed.station)});
            all[placed.link + ("/" + std::to_string(placed.station)) + "/availability"] =
                station.answers && station.wasGood ? "online" : "offline";
        }
        return all;
    }

    const Plant& plant() const
    {
        return m_plant;
    }

private:
    /// What was told of them is of another type.
    std::set<Place> retypedTags(const Plant& next) const
    {
        std::set<Place> tags;
        for (const PlacedTag& before : m_plant) {
            for (const PlacedTag& placed : next) {
                const Place tag(placed.link, placed.name);
                const bool isIt = tag == Place(before.link, before.name);
                if (isIt && before.type != placed.type) tags.insert(tag);
            }
        }
        return tags;
    }

    struct Standing
    {
        bool answers = false, wasGood = false;
    };

    Plant m_plant;
    std::set<Place> m_known;
    std::map<Place, std::string> m_tags; ///< the state's document
    std::map<Place, bool> m_isGood;
    std::map<Place, Standing> m_stations;
};

} // namespace

class JsonNodeRandomTest : public JsonNodeTest
{
protected:
    void run(unsigned seed);

private:
    int number(int below)
    {
        return int(m_random() % unsigned(below));
    }

    void configure(size_t plant);
    void tellReading();
    void tellStanding();
    void sendSet();
    void endCommands();
    void carry(size_t most);
    void note(const BrokerMessage& message);
    void mustHaveStates(const std::string& availability);
    void cut();
    void becomeQuiet();
    void step();

    std::mt19937 m_random;
    Expected m_expected;
    std::map<std::string, std::string> m_retained; ///< at the broker
    std::set<std::string> m_stated;                ///< topics with a state in the MQTT session
    size_t m_checked = 0, m_carried = 0, m_ended = 0;
    int m_lastSet = 0, m_session = 0;
    std::set<int> m_valid, m_results;
};

void JsonNodeRandomTest::configure(size_t plant)
{
    m_expected.configure(PLANTS[plant]);
    node->setDevices(devicesOf(PLANTS[plant]));
}

/// Also of tags that are not configured: their configuration may be on its way.
void JsonNodeRandomTest::tellReading()
{
    const Plant& from = number(5) == 0 ? PLANTS[size_t(number(4))] : m_expected.plant();
    const PlacedTag& placed = from[size_t(number(int(from.size())))];
    const auto quality = Quality(number(3));
    const bool isBit = placed.type == Tag::BOOL;
    const int value = number(isBit ? 2 : 4);
    const Sample sample = quality == BAD && number(4) == 0
                              ? unread(placed.link, placed.name)
                              : reading(placed.link, placed.name, value, quality);
    const std::string text = !sample.hasValue ? "null"
                             : isBit          ? (value != 0 ? "true" : "false")
                                              : std::to_string(value);
    m_expected.reading({placed.link, placed.name}, text, quality, clock.wall());
    node->take({sample});
}

void JsonNodeRandomTest::tellStanding()
{
    const Plant& plant = m_expected.plant();
    const PlacedTag& placed = plant[size_t(number(int(plant.size())))];
    const bool answers = number(3) != 0;
    m_expected.standing({placed.link, std::to_string(placed.station)}, answers);
    node->take({standing(placed.link, placed.station, answers)});
}

void JsonNodeRandomTest::sendSet()
{
    if (session.state != RecordedSession::OPEN) return;
    const Plant& plant = m_expected.plant();
    const PlacedTag& placed = plant[size_t(number(int(plant.size())))];
    const int id = ++m_lastSet;
    const int kind = number(4); // retained, expired, and two good ones
    QByteArray payload = "{\"v\":1,\"id\":" + QByteArray::number(id);
    if (kind == 1) payload += ",\"expires\":" + QByteArray::number(clock.wall() - 1);
    if (kind == 2) payload += ",\"expires\":" + QByteArray::number(clock.wall());
    payload += '}';
    const size_t before = commands.writes.size();
    session.send(QLatin1String("kakb/hall 1/") + QString::fromUtf8(placed.topic) +
                     QLatin1String("/set"),
                 payload, kind == 0);
    EXPECT_EQ(before + (kind >= 2 ? 1 : 0), commands.writes.size());
    if (kind != 0) m_valid.insert(id);
}

void JsonNodeRandomTest::endCommands()
{
    for (; m_ended < commands.writes.size(); ++m_ended)
        commands.end(m_ended, WriteEnd::Outcome(number(WriteEnd::OUTCOMES)), QByteArray(), "x");
}

/// A station that is said to be online has a state for each tag, in each session.
void JsonNodeRandomTest::mustHaveStates(const std::string& availability)
{
    for (const PlacedTag& placed : m_expected.plant()) {
        const std::string station =
            placed.link + ("/" + std::to_string(placed.station)) + "/availability";
        if (station != availability) continue;
        EXPECT_EQ(1u, m_stated.count(placed.topic)) << placed.topic << " of " << availability;
    }
}

/// Looks at what was published, in its order, and lets the broker have some of it.
void JsonNodeRandomTest::carry(size_t most)
{
    if (std::exchange(m_session, session.connects) != session.connects) {
        m_checked = m_carried = 0;
        m_stated.clear();
    }
    for (; m_checked < session.published.size(); ++m_checked) {
        const BrokerMessage& message = session.published[m_checked].message;
        const std::string topic = message.topic.mid(12).toStdString();
        if (message.payload.startsWith('{') && message.isRetained) m_stated.insert(topic);
        if (message.payload.isEmpty()) m_stated.erase(topic);
        if (message.payload == "online" && topic != "status") mustHaveStates(topic);
    }
    for (; most > 0 && m_carried < session.published.size(); --most) {
        RecordedSession::Published& published = session.published[m_carried++];
        note(published.message);
        if (published.message.qos == 0) continue;
        published.isDelivered = true;
        node->delivered(published.request);
    }
}

void JsonNodeRandomTest::note(const BrokerMessage& message)
{
    const std::string topic = message.topic.mid(12).toStdString();
    if (!message.isRetained) {
        const QJsonObject result = QJsonDocument::fromJson(message.payload).object();
        m_results.insert(result.value(QLatin1String("id")).toInt());
    } else if (message.payload.isEmpty()) {
        m_retained.erase(topic);
    } else {
        m_retained[topic] = message.payload.toStdString();
    }
}

/// What the broker has not taken is gone, and the will goes out.
void JsonNodeRandomTest::cut()
{
    if (session.state == RecordedSession::CLOSED) return;
    carry(0);
    const bool wasOpen = session.state == RecordedSession::OPEN;
    session.end("lost");
    if (wasOpen) note(session.will);
}

void JsonNodeRandomTest::becomeQuiet()
{
    session.isFull = false;
    clock.passMs(30000);
    turns();
    if (session.state == RecordedSession::CLOSED) return becomeQuiet();
    if (session.state == RecordedSession::WAITING) session.accept();
    session.grant();
    endCommands();
    turns();
    carry(session.published.size());
    turns();
    carry(session.published.size());
    EXPECT_EQ(m_expected.topics(), m_retained);
    EXPECT_EQ(m_valid, m_results);
}

void JsonNodeRandomTest::step()
{
    switch (number(16)) {
    case 0:
        if (number(4) == 0) configure(size_t(number(int(PLANTS.size()))));
        break;
    case 1:
        if (number(3) == 0) cut();
        break;
    case 2:
        if (session.state == RecordedSession::WAITING) session.accept();
        session.grant();
        break;
    case 3:
        session.isFull = !session.isFull;
        break;
    case 4:
        clock.passMs(number(3000));
        break;
    case 5:
    case 6:
        tellStanding();
        break;
    case 7:
        sendSet();
        break;
    case 8:
        if (number(2) == 0) endCommands();
        break;
    case 9:
    case 10:
        if (session.state == RecordedSession::OPEN) carry(size_t(number(8)));
        break;
    default:
        tellReading();
    }
    node->turn();
    if (session.state == RecordedSession::OPEN) carry(0);
}

void JsonNodeRandomTest::run(unsigned seed)
{
    SCOPED_TRACE("seed " + std::to_string(seed));
    m_random.seed(seed);
    configure(0);
    for (int part = 0; part < 400 && !HasFailure(); ++part) {
        const int steps = number(120);
        for (int at = 0; at < steps; ++at)
            step();
        becomeQuiet();
    }
}

TEST_F(JsonNodeRandomTest, EndsWithWhatTheLinksToldLast)
{
    run(std::random_device()());
}
