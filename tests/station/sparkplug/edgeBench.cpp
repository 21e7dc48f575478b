#include "edgeBench.h"

#include <algorithm>

namespace {

std::vector<BrokerAddress> servers(int count)
{
    std::vector<BrokerAddress> all;
    for (int i = 0; i < count; ++i) {
        BrokerAddress address;
        address.host = QString(QLatin1String("broker%1")).arg(i + 1);
        all.push_back(address);
    }
    return all;
}

EdgeNodeSettings settingsOf(const EdgeBench::Setup& setup)
{
    EdgeNodeSettings settings;
    settings.group = QLatin1String("works");
    settings.node = QLatin1String("station");
    settings.servers = servers(setup.servers);
    settings.primaryHost = QLatin1String(setup.primaryHost);
    settings.takesCommands = setup.takesCommands;
    return settings;
}

void addVarint(QByteArray& bytes, quint64 value)
{
    for (; value >= 0x80; value >>= 7)
        bytes += char(value & 0x7F) | char(0x80);
    bytes += char(value);
}

void addKey(QByteArray& bytes, int field, int kind)
{
    addVarint(bytes, quint64(field) << 3 | quint64(kind));
}

void addBytes(QByteArray& bytes, int field, const QByteArray& value)
{
    addKey(bytes, field, WireField::BYTES);
    addVarint(bytes, quint64(value.size()));
    bytes += value;
}

void addNumber(QByteArray& bytes, int field, quint64 value)
{
    const bool isFloat = field == 12;
    addKey(bytes, field, isFloat ? int(WireField::FOUR_BYTES) : int(WireField::VARINT));
    if (!isFloat) return addVarint(bytes, value);
    for (int i = 0; i < 4; ++i)
        bytes += char(value >> (8 * i) & 0xFF);
}

} // namespace

// The session.

void ToldSession::note(Told::What what, const BrokerMessage& message, const QStringList& topics)
{
    Told entry;
    entry.what = what;
    entry.session = connects;
    entry.wall = m_clock.wall();
    entry.message = message;
    entry.topics = topics;
    entry.isAccepted = state == OPEN;
    entry.isGranted = isGranted;
    entry.server = server;
    const QStringList levels = message.topic.split(QLatin1Char('/'));
    if (levels.size() >= 4 && levels[0] == QLatin1String("spBv1.0")) {
        entry.kind = levels[2];
        if (levels.size() > 4) entry.device = levels[4];
        entry.payload = receivedPayload(message.payload);
    }
    told.push_back(entry);
}

void ToldSession::connect(const BrokerAddress& address, const BrokerMessage& last)
{
    const bool isAlone = state == CLOSED;
    isGranted = false;
    RecordedSession::connect(address, last);
    note(Told::CONNECT, last);
    told.back().isAlone = isAlone;
}

int ToldSession::subscribe(const QStringList& topics)
{
    note(Told::SUBSCRIBE, {}, topics);
    return RecordedSession::subscribe(topics);
}

int ToldSession::publish(const BrokerMessage& message)
{
    note(Told::PUBLISH, message);
    return RecordedSession::publish(message);
}

void ToldSession::leave()
{
    note(Told::LEAVE, {});
    RecordedSession::leave();
}

void ToldSession::drop()
{
    note(Told::DROP, {});
    RecordedSession::drop();
}

std::vector<LoggedRow> MemoryLog::rowsBehind(qint64 sequence, qint64 last, int most)
{
    std::vector<LoggedRow> found;
    const qint64 end = std::min(last, qint64(committed));
    for (qint64 at = std::max<qint64>(sequence, 0) + 1; at <= end && int(found.size()) < most;
         ++at) {
        Sample sample = rows[size_t(at - 1)];
        sample.number = 0;
        found.push_back({at, sample});
    }
    return found;
}

// The bench.

EdgeBench::EdgeBench(const Setup& setup)
    : ledger(m_folder.filePath(QLatin1String("cursor")), setup.keepsHistory ? &log : nullptr),
      node(settingsOf(setup), session, sequence, ledger, commands, clock)
{
    session.listener = &node;
    node.setDevices(plantDevices());
}

void EdgeBench::accept()
{
    session.accept();
    turn();
}

void EdgeBench::grant(bool isGranted)
{
    session.isGranted = isGranted;
    session.grant(isGranted);
    turn();
}

void EdgeBench::cut(bool connectSent)
{
    session.end("the connection was lost", connectSent);
    turn();
}

void EdgeBench::state(bool isOnline, qint64 time)
{
    const QByteArray text = QByteArray("{\"online\":") + (isOnline ? "true" : "false") +
                            ",\"timestamp\":" + QByteArray::number(time) + '}';
    node.received({QLatin1String("spBv1.0/STATE/scada"), text, 1, true});
    turn();
}

void EdgeBench::command(const char* kind, const QString& device, const QByteArray& payload,
                        bool isRetained)
{
    QString topic = QString(QLatin1String("spBv1.0/works/%1/station")).arg(QLatin1String(kind));
    if (!device.isEmpty()) topic += QLatin1Char('/') + device;
    session.send(topic, payload, isRetained);
    turn();
}

void EdgeBench::acknowledge()
{
    session.acknowledge();
    turn();
}

void EdgeBench::beBorn()
{
    turn();
    accept();
    grant();
}

Sample EdgeBench::reading(const char* link, const char* tag, double value, Quality quality)
{
    Sample sample;
    sample.kind = Sample::READING;
    sample.link = QLatin1String(link);
    sample.tag = QLatin1String(tag);
    sample.time = clock.wall();
    sample.value = value;
    sample.hasValue = true;
    sample.quality = quality;
    sample.number = ++m_lastNumber;
    log.rows.push_back(sample);
    return sample;
}

Sample EdgeBench::standing(const char* link, int station, bool answers)
{
    Sample sample;
    sample.kind = Sample::STANDING;
    sample.link = QLatin1String(link);
    sample.time = clock.wall();
    sample.station = station;
    sample.answers = answers;
    return sample;
}

void EdgeBench::take(const std::vector<Sample>& samples)
{
    for (const Sample& sample : samples) {
        if (sample.kind == Sample::READING) present[{sample.link, sample.tag}] = sample;
    }
    node.take(samples);
    turn();
}

void EdgeBench::read(const char* link, const char* tag, double value, Quality quality)
{
    take({reading(link, tag, value, quality)});
}

void EdgeBench::stand(const char* link, int station, bool answers)
{
    take({standing(link, station, answers)});
}

void EdgeBench::commitRows()
{
    log.committed = log.rows.size();
}

/// The node gets its turns in time.
void EdgeBench::passMs(qint64 ms)
{
    const qint64 step = 500;
    for (; ms > step; ms -= step) {
        clock.passMs(step);
        turn();
    }
    clock.passMs(ms);
    turn();
}

/// The disk is never slow here.
qint64 EdgeBench::turn()
{
    ledger.awaitStored();
    return node.turn();
}

std::vector<Told> EdgeBench::since(size_t first) const
{
    return {session.told.begin() + std::ptrdiff_t(first), session.told.end()};
}

std::vector<Told> EdgeBench::all(const char* kind) const
{
    std::vector<Told> found;
    for (const Told& entry : session.told) {
        if (entry.is(kind)) found.push_back(entry);
    }
    return found;
}

Tag tagOf(const char* name, int station, Tag::Type type, Tag::Access access)
{
    Tag tag;
    tag.name = QLatin1String(name);
    tag.station = station;
    tag.area = QLatin1String(type == Tag::BOOL ? "MX" : "MW");
    tag.type = type;
    tag.access = access;
    return tag;
}

std::vector<EdgeDevice> plantDevices()
{
    const QString oven = QLatin1String("oven"), mill = QLatin1String("mill");
    return {{oven,
             1,
             {tagOf("temperature", 1, Tag::FLOAT32, Tag::READ_WRITE), tagOf("door", 1, Tag::BOOL),
              tagOf("count", 1, Tag::UINT16, Tag::READ_WRITE)}},
            {oven, 2, {tagOf("level", 2, Tag::INT16, Tag::READ_WRITE)}},
            {mill,
             1,
             {tagOf("speed", 1, Tag::INT32, Tag::READ_WRITE), tagOf("power", 1, Tag::UINT32)}}};
}

QByteArray commandBytes(const char* name, quint64 alias, int field, quint64 bits, quint64 type)
{
    QByteArray metric;
    if (*name != '\0') addBytes(metric, 1, name);
    if (alias != 0) addNumber(metric, 2, alias);
    if (type != 0) addNumber(metric, 4, type);
    if (field != 0) addNumber(metric, field, bits);
    QByteArray payload;
    addNumber(payload, 1, 1700000000000);
    addBytes(payload, 2, metric);
    return payload;
}

QByteArray rebirthBytes(bool isWanted)
{
    return commandBytes("Node Control/Rebirth", 0, 14, isWanted ? 1 : 0, 11);
}
