#include "events/streamedStation.h"

#include "api/valueDocument.h"
#include "randomSource.h"

#include <QJsonArray>

namespace {

/// All values as objects by link and tag.
using Model = std::map<QString, QJsonObject>;

QString keyOf(const QString& link, const QString& tag)
{
    return link + QLatin1Char('/') + tag;
}

/// The values as GET /values would tell them now.
Model truth(const StreamedStation& station)
{
    Model all;
    for (const std::unique_ptr<TestLink>& link : station.links) {
        const std::vector<TagReading> readings = link->values->readings();
        for (size_t at = 0; at < readings.size(); ++at) {
            const Tag& tag = link->values->tags()[at];
            JsonText json;
            appendValue(json, link->values->name(), tag, readings[at],
                        isWritable(tag, station.areWritesAllowed));
            all[keyOf(link->values->name(), tag.name)] =
                QJsonDocument::fromJson(json.document()).object();
        }
    }
    return all;
}

/// Takes the messages into the values, as the page does.
class ModelClient
{
public:
    void apply(const ReceivedMessage& message)
    {
        const QJsonObject json = message.json();
        if (message.name == "values") applyValues(json);
        if (message.name == "beat") applySeen(json.value(QLatin1String("seen")).toArray());
    }

    Model values;

private:
    void applyValues(const QJsonObject& json)
    {
        if (json.value(QLatin1String("full")).toBool()) values.clear();
        for (const QJsonValue& value : json.value(QLatin1String("values")).toArray()) {
            const QJsonObject changes = value.toObject();
            QJsonObject& known = values[keyOf(changes.value(QLatin1String("link")).toString(),
                                              changes.value(QLatin1String("tag")).toString())];
            for (auto field = changes.begin(); field != changes.end(); ++field)
                known.insert(field.key(), field.value());
        }
    }

    void applySeen(const QJsonArray& seen)
    {
        for (const QJsonValue& value : seen) {
            const QJsonArray one = value.toArray();
            const QString key = keyOf(one.at(0).toString(), one.at(1).toString());
            ASSERT_TRUE(values.count(key)) << qPrintable(key);
            values[key].insert(QLatin1String("time"), one.at(2));
        }
    }
};

/// Whether the client shows what was true at one moment. The times of values that did not change
/// may be older, because they come with the beat.
bool isStateOf(const Model& client, const Model& moment)
{
    if (client.size() != moment.size()) return false;
    for (auto one = client.begin(), other = moment.begin(); one != client.end(); ++one, ++other) {
        QJsonObject shown = one->second;
        const QJsonObject& was = other->second;
        const QLatin1String time("time");
        if (one->first != other->first || shown.value(time).toDouble() > was.value(time).toDouble())
            return false;
        shown.insert(time, was.value(time));
        if (shown != was) return false;
    }
    return true;
}

/// A station with random answers, troubles, reloads, stops and clients that stall and come back.
class RandomStream
{
public:
    explicit RandomStream(std::uint64_t seed) : m_random(seed)
    {
        station.addLink("a", 4);
        station.addLink("b", 3);
        for (int count = 0; count < 3; ++count)
            m_clients.push_back({station.connect(), ModelClient(), 0, 0});
        m_moments.push_back(truth(station));
    }

    void step()
    {
        change();
        station.clock.passMs(m_random.oneIn(200) ? 5000 : m_random.between(0, 40));
        m_moments.push_back(truth(station));
        station.run();
        for (Client& client : m_clients)
            act(client);
    }

    /// Lets everything arrive, and compares all clients with the truth.
    void settle()
    {
        for (int window = 0; window < 25; ++window) {
            for (int turn = 0; turn < 10; ++turn)
                passTenMs();
            for (Client& client : m_clients)
                take(client);
        }
        for (const Client& client : m_clients)
            ASSERT_EQ(truth(station), client.model.values);
    }

    StreamedStation station;

private:
    struct Client
    {
        TestClient stream;
        ModelClient model;
        quint64 lastId;
        size_t moment;   ///< of the values that it shows
        int stalled = 0; ///< further steps in which it takes nothing
    };

    void passTenMs()
    {
        station.clock.passMs(10);
        m_moments.push_back(truth(station));
        station.run();
    }

    void change()
    {
        TestLink& link = *m_random.pick(station.links);
        const int tag = m_random.below(int(link.values->tags().size()));
        switch (m_random.weighted({60, 8, 1, 1})) {
        case 0:
            return link.answer(tag, m_random.below(4), station.clock);
        case 1:
            return link.values->tagsBad({tag}, QLatin1String("refused"), station.clock.steady());
        case 2:
            station.links.pop_back();
            station.addLink("b", m_random.between(1, 5));
            return;
        default:
            station.areWritesAllowed = !station.areWritesAllowed;
        }
    }

    void act(Client& client)
    {
        if (client.stalled > 0) {
            --client.stalled;
            return;
        }
        if (m_random.oneIn(60)) client.stalled = m_random.between(1, 300);
        if (m_random.oneIn(60)) {
            client.stream = station.connect({}, QByteArray::number(client.lastId));
            return;
        }
        if (m_random.oneIn(3)) return takeSome(client);
        take(client);
    }

    void take(Client& client)
    {
        apply(client, client.stream.take());
    }

    void takeSome(Client& client)
    {
        char piece[100];
        const size_t most = size_t(m_random.between(1, int(sizeof piece)));
        const qint64 count = client.stream.body->read(piece, most);
        apply(client, client.stream.reader.take(QByteArray(piece, int(count))));
    }

    void apply(Client& client, const std::vector<ReceivedMessage>& messages)
    {
        for (const ReceivedMessage& message : messages) {
            ASSERT_GE(message.id, client.lastId);
            client.lastId = message.id;
            client.model.apply(message);
            if (message.name == "values") findMoment(client);
        }
    }

    /// The values that it shows were true together, not before those that it showed last.
    void findMoment(Client& client)
    {
        while (client.moment < m_moments.size() &&
               !isStateOf(client.model.values, m_moments[client.moment]))
            ++client.moment;
        ASSERT_LT(client.moment, m_moments.size()) << "these values were never true together";
    }

    RandomSource m_random;
    std::vector<Model> m_moments; ///< what was true at each turn
    std::vector<Client> m_clients;
};

} // namespace

TEST(StreamedModel, IsTheTruthOfOneMomentAfterEachMessage)
{
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomStream stream(seed);
        for (int step = 0; step < 2000 && !::testing::Test::HasFatalFailure(); ++step)
            stream.step();
        stream.settle();
        if (::testing::Test::HasFailure()) return;
    }
}
