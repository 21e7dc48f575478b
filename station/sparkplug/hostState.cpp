#include "sparkplug/hostState.h"

#include "values/jsonNumbers.h"
#include "values/strangersJson.h"

namespace {

enum { LONGEST_STATE = 4096 };

} // namespace

std::optional<HostStatement> hostStatement(const QByteArray& payload)
{
    if (payload.size() > LONGEST_STATE) return std::nullopt;
    const QJsonObject state = strangersObject(payload).object;
    const QJsonValue online = state.value(QLatin1String("online"));
    const std::optional<qint64> time = wholeNumber(state.value(QLatin1String("timestamp")));
    if (!online.isBool() || !time || *time < 0) return std::nullopt;
    return HostStatement{online.toBool(), *time};
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
    if (m_times.contains(at) && state->time < m_times.value(at)) return OLD;
    m_times.insert(at, state->time);
    return state->isOnline ? ONLINE : OFFLINE;
}
