#include "broker/mosquittoSession.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

enum : qint64 {
    SECOND_US = 1000000,
    DIAL_LIMIT_US = 3 * SECOND_US,
    LOOK_AFTER_US = SECOND_US,
    OLDEST_ANSWER_US = 60 * SECOND_US
};

} // namespace

MosquittoSession::MosquittoSession(ClientSettings settings, const StationClock& clock,
                                   HostLookup::Resolve resolve)
    : m_settings(std::move(settings)), m_clock(clock), m_resolve(std::move(resolve))
{
}

MosquittoSession::~MosquittoSession() = default;

void MosquittoSession::setListener(SessionListener& listener)
{
    m_listener = &listener;
}

pollfd MosquittoSession::awaited() const
{
    if (m_lookup) return {m_lookup->descriptor(), POLLIN, 0};
    if (m_client) return m_client->awaited();
    return {-1, 0, 0};
}

qint64 MosquittoSession::due() const
{
    if (!m_failure.isEmpty() || (m_client && !m_client->events().empty())) return 0;
    if (!m_client) return std::numeric_limits<qint64>::max();
    const bool isWaiting = !m_client->isReached() && !m_addresses.isEmpty();
    return isWaiting ? std::min(m_lookAfterAt, m_dialledAt + DIAL_LIMIT_US) : m_lookAfterAt;
}

void MosquittoSession::drive(short found)
{
    noteSleep();
    if (m_lookup)
        look();
    else if (m_client)
        m_client->drive(found);
    if (isNextDue()) tryNext();
    lookAfter();
    tellEvents();
}

void MosquittoSession::connect(const BrokerAddress& server, const BrokerMessage& will)
{
    close();
    m_isConnectSent = false;
    m_server = server;
    m_will = will;
    try {
        m_lookup = lookupOf(server.host);
    } catch (const std::exception& error) {
        m_failure = QString::fromLocal8Bit(error.what());
    }
}

/// An answer came behind the time at which its lookup was given up.
std::unique_ptr<HostLookup> MosquittoSession::lookupOf(const QString& host)
{
    GivenUp earlier = std::exchange(m_givenUp[host], GivenUp());
    m_givenUp.erase(host);
    const bool isYoung = m_clock.steady() - earlier.at <= OLDEST_ANSWER_US;
    if (earlier.lookup && (isYoung || !earlier.lookup->found())) return std::move(earlier.lookup);
    return std::make_unique<HostLookup>(host, m_resolve);
}

bool MosquittoSession::isConnectSent() const
{
    return m_client ? m_client->isConnectSent() : m_isConnectSent;
}

int MosquittoSession::subscribe(const QStringList& topics)
{
    return m_client ? m_client->subscribe(topics) : 0;
}

int MosquittoSession::publish(const BrokerMessage& message)
{
    return m_client ? m_client->publish(message) : 0;
}

bool MosquittoSession::isDrained() const
{
    return !m_client || m_client->isDrained();
}

void MosquittoSession::leave()
{
    if (m_client) m_client->disconnect();
    close();
}

void MosquittoSession::drop()
{
    close();
}

void MosquittoSession::look()
{
    const auto found = m_lookup->found();
    if (!found) return;
    m_addresses = found->addresses;
    m_failure = found->problem;
    m_lookup.reset();
    putSilentLast();
    if (m_failure.isEmpty()) tryNext();
}

/// When all were silent, the row begins anew.
void MosquittoSession::putSilentLast()
{
    QStringList& silent = m_silent[m_server.host];
    const auto isHeard = [&silent](const QString& address) { return !silent.contains(address); };
    const auto firstSilent = std::stable_partition(m_addresses.begin(), m_addresses.end(), isHeard);
    silent = m_addresses.mid(int(firstSilent - m_addresses.begin()));
    if (silent.size() == m_addresses.size()) silent.clear();
}

void MosquittoSession::noteSilence()
{
    if (!m_client) return;
    QStringList& silent = m_silent[m_server.host];
    silent.removeAll(m_address);
    if (!m_client->isReached() && !m_client->isOver()) silent.push_back(m_address);
}

/// Whether the address that is tried is no good, and there is another one.
bool MosquittoSession::isNextDue() const
{
    if (!m_client || m_client->isReached() || m_addresses.isEmpty()) return false;
    return m_client->isOver() || m_clock.steady() >= m_dialledAt + DIAL_LIMIT_US;
}

void MosquittoSession::tryNext()
{
    noteSilence();
    m_address = m_addresses.takeFirst();
    m_client.reset();
    m_dialledAt = m_clock.steady();
    m_lookAfterAt = m_dialledAt + LOOK_AFTER_US;
    try {
        m_client = std::make_unique<MosquittoClient>(m_settings, m_server, m_address, m_will);
    } catch (const std::exception& error) {
        m_failure = QString::fromUtf8(error.what());
    }
}

void MosquittoSession::lookAfter()
{
    if (!m_client || m_clock.steady() < m_lookAfterAt) return;
    m_lookAfterAt = m_clock.steady() + LOOK_AFTER_US;
    m_client->lookAfter();
}

void MosquittoSession::noteSleep()
{
    const qint64 now = m_clock.steady();
    const qint64 undriven = now - std::exchange(m_drivenAt, now);
    if (m_client && undriven * 2 > 3 * SECOND_US * m_client->keepAliveS())
        m_client->giveUp(QLatin1String("this station stood still for too long"));
}

/// Each event may end the session, and begin another one.
void MosquittoSession::tellEvents()
{
    if (!m_failure.isEmpty()) return tellEnd(std::exchange(m_failure, QString()));
    if (isNextDue()) return; // the end of a try is not that of the session
    while (m_client && !m_client->events().empty()) {
        const ClientEvent event = m_client->events().front();
        m_client->events().pop_front();
        tell(event);
    }
}

void MosquittoSession::tell(const ClientEvent& event)
{
    switch (event.kind) {
    case ClientEvent::CONNECTED:
        return m_listener->connected();
    case ClientEvent::ENDED:
        return tellEnd(event.reason);
    case ClientEvent::SUBSCRIBED:
        return m_listener->subscribed(event.request, event.isGranted);
    case ClientEvent::DELIVERED:
        return m_listener->delivered(event.request);
    case ClientEvent::RECEIVED:
        return m_listener->received(event.message);
    }
}

/// @param reason  not m_failure, which close() clears
void MosquittoSession::tellEnd(const QString& reason)
{
    close();
    m_listener->ended(reason, m_isConnectSent);
}

/// What happened and was not told is forgotten.
void MosquittoSession::close()
{
    m_isConnectSent = isConnectSent();
    if (m_lookup) m_givenUp[m_server.host] = {std::move(m_lookup), m_clock.steady()};
    m_addresses.clear();
    noteSilence();
    m_client.reset();
    m_failure.clear();
}
