#include "sparkplug/hostState.h"

#include "values/jsonKeys.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace {

enum { LONGEST_STATE = 4096 };

/// Whole numbers up to here are exact in JSON's doubles.
const double LAST_TIME = 9007199254740992.0;

} // namespace

std::optional<HostStatement> hostStatement(const QByteArray& payload)
{
    if (payload.size() > LONGEST_STATE || !jsonKeyProblem(payload).isEmpty()) return std::nullopt;
    const QJsonObject state = QJsonDocument::fromJson(payload).object();
    const QJsonValue online = state.value(QLatin1String("online"));
    const QJsonValue timestamp = state.value(QLatin1String("timestamp"));
    if (!online.isBool() || !timestamp.isDouble()) return std::nullopt;
    const double time = timestamp.toDouble();
    if (!(time >= 0) || time > LAST_TIME || std::floor(time) < time) return std::nullopt;
    return HostStatement{online.toBool(), qint64(time)};
}

HostState::HostState(const QString& host)
    : m_topic(host.isEmpty() ? QString() : QLatin1String("spBv1.0/STATE/") + host)
{
}

HostState::News HostState::told(const BrokerAddress& server, const QByteArray& payload)
{
    const std::optional<HostStatement> state = hostStatement(payload);
    if (!state) return NOTHING;
    const QString at = server.text();
    if (m_times.contains(at) && state->time < m_times.value(at)) return NOTHING;
    m_times.insert(at, state->time);
    return state->isOnline ? ONLINE : OFFLINE;
}
