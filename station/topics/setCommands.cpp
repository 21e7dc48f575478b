#include "topics/setCommands.h"

#include "values/jsonText.h"
#include "values/valueJson.h"

#include <utility>

namespace {

const QLatin1String SET("/set");
const QLatin1String RESULT("/result");

struct Result
{
    QByteArray id;
    WriteEnd::Outcome outcome;
    QString reason;
    QByteArray held; ///< JSON
};

BrokerMessage resultMessage(const QString& topic, const Result& result)
{
    JsonText json;
    json.beginObject().key("id").raw(result.id);
    writeOutcome(json, result.outcome, result.reason);
    json.key("v").raw(result.held).endObject();
    return {topic + RESULT, json.document(), 1, false};
}

QString expiredText(qint64 expires, qint64 now)
{
    return QString(QLatin1String("expired: its \"expires\" is %1, this station's clock says %2"))
        .arg(QString::number(expires), QString::number(now));
}

} // namespace

void SetCommands::Results::put(const BrokerMessage& result)
{
    waiting.push_back(result);
    if (waiting.size() > MOST_WAITING) waiting.pop_front();
}

SetCommands::SetCommands(const RetainedStates& states, PlantCommands& commands,
                         const StationClock& clock)
    : m_states(states), m_commands(commands), m_clock(clock), m_results(std::make_shared<Results>())
{
}

void SetCommands::received(const BrokerMessage& message, const QString& server)
{
    if (message.payload.isEmpty() || !message.topic.endsWith(SET)) return;
    ++m_results->commands;
    Asked asked;
    asked.topic = message.topic.left(message.topic.size() - SET.size());
    asked.tag = m_states.tagAt(asked.topic);
    asked.from = server + QLatin1Char(' ') + message.topic;
    if (message.isRetained) {
        ++m_results->refusals;
        const QString why = QLatin1String("it was retained by the broker, so it is old");
        return m_commands.refused(asked.topic, why, asked.from);
    }
    const SetRequest request = setRequestOf(message.payload);
    asked.id = request.id;
    take(asked, request);
}

/// Why it is not taken, in words; empty: it is.
QString SetCommands::problemOf(const Asked& asked, const SetRequest& request) const
{
    if (asked.tag == nullptr) return QLatin1String("no tag has this topic");
    if (!request.problem.isEmpty()) return request.problem;
    const qint64 now = m_clock.wall();
    if (request.expires && *request.expires < now) return expiredText(*request.expires, now);
    return QString();
}

void SetCommands::take(const Asked& asked, const SetRequest& request)
{
    const QString problem = problemOf(asked, request);
    if (!problem.isEmpty()) return refuse(asked, problem);
    const std::variant<MetricValue, UnfitCommand> value = setValue(asked.tag->tag, request.value);
    if (const auto* const unfit = std::get_if<UnfitCommand>(&value))
        return refuse(asked, unfit->problem);
    const std::weak_ptr<Results> results = m_results;
    const auto ended = [results, tag = asked.tag->tag, topic = asked.topic,
                        id = asked.id](const WriteEnd& end) {
        const std::shared_ptr<Results> here = results.lock();
        if (!here) return;
        if (end.outcome == WriteEnd::REFUSED) ++here->refusals;
        const QByteArray held = valueJson(tag, end.held.bytes);
        here->put(resultMessage(topic, {id, end.outcome, end.reason, held}));
    };
    m_commands.write(asked.tag->link, asked.tag->tag.name, std::get<MetricValue>(value), asked.from,
                     ended);
}

void SetCommands::refuse(const Asked& asked, const QString& reason)
{
    ++m_results->refusals;
    m_commands.refused(asked.topic, reason, asked.from);
    if (asked.tag == nullptr && asked.topic.size() > LONGEST_UNKNOWN) return;
    const QByteArray held = m_states.valueAt(asked.topic);
    m_results->put(resultMessage(asked.topic, {asked.id, WriteEnd::REFUSED, reason, held}));
}

std::optional<BrokerMessage> SetCommands::nextResult()
{
    if (m_results->waiting.empty() || m_results->sent.size() >= MOST_SENT) return std::nullopt;
    BrokerMessage result = std::move(m_results->waiting.front());
    m_results->waiting.pop_front();
    return result;
}

void SetCommands::sent(int request, const BrokerMessage& result)
{
    if (request == 0)
        m_results->waiting.push_front(result);
    else
        m_results->sent[request] = result;
}

void SetCommands::delivered(int request)
{
    m_results->sent.erase(request);
}

void SetCommands::sessionEnded()
{
    const std::map<int, BrokerMessage> sent = std::exchange(m_results->sent, {});
    for (auto result = sent.rbegin(); result != sent.rend(); ++result)
        m_results->waiting.push_front(result->second);
}
