#include "plant/plantThread.h"

#include "topics/jsonNode.h"
#include "wire/timeUnits.h"

#include <algorithm>
#include <limits>

namespace {

/// An end that is told to the brokers takes no longer, whatever they answer.
enum : qint64 { STOP_LIMIT = 1500 * MILLISECOND };

/// The dialects are two clients for a broker.
ClientSettings clientSettings(const PlantSettings& settings, const QString& clientId)
{
    ClientSettings client;
    client.clientId = clientId;
    client.user = settings.user;
    client.password = settings.password;
    client.tls = {settings.ca, settings.certificate, settings.key};
    client.keepAliveS = settings.keepAliveS;
    return client;
}

EdgeNodeSettings edgeSettings(const PlantSettings& settings)
{
    return {settings.group, settings.node, settings.servers, settings.primaryHost,
            settings.takesCommands};
}

JsonNodeSettings jsonSettings(const PlantSettings& settings, const QString& topicFile)
{
    return {settings.node, settings.servers, settings.takesCommands, topicFile};
}

/// Whether somebody who looks should look again.
bool isNews(const PlantStanding& before, const PlantStanding& now)
{
    return before.state != now.state || before.server != now.server ||
           before.trouble != now.trouble;
}

/// @param us  negative: it is late
timespec timeSpan(qint64 us)
{
    timespec span{};
    span.tv_sec = time_t(std::max<qint64>(us, 0) / SECOND);
    span.tv_nsec = long(std::max<qint64>(us, 0) % SECOND * 1000);
    return span;
}

} // namespace

Plant::Thread::Thread(const PlantSettings& settings, const PlantSurroundings& surroundings)
    : m_settings(settings),
      m_surroundings(surroundings),
      m_queue([this] { m_wakeup.wake(); }),
      m_commands(surroundings.links, surroundings.areWritesAllowed, [this] { m_wakeup.wake(); }),
      m_sequence(surroundings.sequenceFile)
{
}

void Plant::Thread::addDialects()
{
    const StationClock& clock = m_surroundings.clock;
    const auto add = [this, &clock](const QString& clientId, const auto& dialectOn) {
        const ClientSettings client = clientSettings(m_settings, clientId);
        m_spoken.push_back(std::unique_ptr<Spoken>(new Spoken{{client, clock}, nullptr}));
        Spoken& spoken = *m_spoken.back();
        spoken.dialect = dialectOn(spoken.session);
        spoken.session.setListener(*spoken.dialect);
    };
    if (m_settings.speaksSparkplug)
        add(sparkplugClientId(m_settings), [&](BrokerSession& session) {
            return std::make_unique<EdgeNode>(edgeSettings(m_settings), session, m_sequence,
                                              *m_ledger, m_commands, clock);
        });
    if (m_settings.speaksJson)
        add(jsonClientId(m_settings), [&](BrokerSession& session) {
            return std::make_unique<JsonNode>(jsonSettings(m_settings, m_surroundings.topicFile),
                                              session, m_commands, clock);
        });
}

Plant::Thread::~Thread()
{
    stop();
}

void Plant::Thread::setDevices(std::vector<EdgeDevice> devices)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_devices = std::move(devices);
    }
    m_wakeup.wake();
}

void Plant::Thread::start(SampleLog* log)
{
    m_ledger.emplace(m_surroundings.cursorFile, log);
    addDialects();
    noteStandings();
    m_thread = std::thread([this] { run(); });
}

void Plant::Thread::stop()
{
    if (!m_thread.joinable()) return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isStopAsked = true;
    }
    m_wakeup.wake();
    m_thread.join();
}

std::vector<PlantStanding> Plant::Thread::standings() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_standings;
}

void Plant::Thread::run()
{
    while (!isOver()) {
        takeNews();
        const qint64 due = turnDialects();
        noteStandings();
        if (!isOver()) wait(due);
    }
}

/// The samples were put in behind the order that names their devices, so they are taken first.
void Plant::Thread::takeNews()
{
    m_wakeup.clear();
    const std::vector<Sample> samples = m_queue.take();
    takeOrders();
    for (const auto& spoken : m_spoken)
        if (!samples.empty()) spoken->dialect->take(samples);
    m_commands.turn();
}

void Plant::Thread::takeOrders()
{
    std::optional<std::vector<EdgeDevice>> devices;
    bool isStopAsked = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        devices.swap(m_devices);
        isStopAsked = m_isStopAsked;
    }
    for (const auto& spoken : m_spoken)
        if (devices) spoken->dialect->setDevices(*devices);
    if (isStopAsked && m_stopLimit == 0) m_stopLimit = m_surroundings.clock.steady() + STOP_LIMIT;
}

/// @return when the next turn is due, on the steady clock
qint64 Plant::Thread::turnDialects()
{
    qint64 due = std::numeric_limits<qint64>::max();
    if (m_stopLimit != 0) due = m_stopLimit;
    for (const auto& spoken : m_spoken) {
        if (m_stopLimit != 0) spoken->dialect->leave();
        due = std::min(due, spoken->dialect->turn());
        due = std::min(due, spoken->session.due());
    }
    return due;
}

/// Waits until there is something to do, and lets the sessions do what their sockets allow.
void Plant::Thread::wait(qint64 due)
{
    std::vector<pollfd> awaited;
    for (const auto& spoken : m_spoken)
        awaited.push_back(spoken->session.awaited());
    awaited.push_back({m_wakeup.descriptor(), POLLIN, 0});
    const timespec span = timeSpan(due - m_surroundings.clock.steady());
    const bool isForEver = due == std::numeric_limits<qint64>::max();
    if (::ppoll(awaited.data(), awaited.size(), isForEver ? nullptr : &span, nullptr) < 0)
        for (pollfd& one : awaited)
            one.revents = 0; // interrupted: nothing is known of the sockets
    for (size_t i = 0; i < m_spoken.size(); ++i)
        m_spoken[i]->session.drive(awaited[i].revents);
}

bool Plant::Thread::isOver() const
{
    if (m_stopLimit == 0) return false;
    return m_surroundings.clock.steady() >= m_stopLimit ||
           std::all_of(m_spoken.begin(), m_spoken.end(),
                       [](const auto& spoken) { return spoken->dialect->isOver(); });
}

void Plant::Thread::noteStandings()
{
    std::vector<PlantStanding> now;
    for (const auto& spoken : m_spoken)
        now.push_back(spoken->dialect->standing());
    bool isChanged = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        isChanged =
            !std::equal(m_standings.begin(), m_standings.end(), now.begin(), now.end(),
                        [](const auto& before, const auto& next) { return !isNews(before, next); });
        m_standings.swap(now);
    }
    if (isChanged && m_surroundings.changed) m_surroundings.changed();
}
