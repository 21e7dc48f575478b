#include "sparkplug/edgeCommands.h"

#include "sparkplug/edgeBirths.h"
#include "values/jsonText.h"
#include "values/valueJson.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

/// A stranger's text in the audit.
enum { LONGEST_NAME = 200 };

QString outcomeText(const QString& metric, const WriteEnd& end, const QByteArray& held)
{
    JsonText json;
    json.beginObject().key("id");
    if (end.id != 0)
        json.integer(qint64(end.id));
    else
        json.null(); // it was no write
    json.key("metric").text(metric);
    writeOutcome(json, end.outcome, end.reason);
    json.key("value").raw(held).endObject();
    return QString::fromUtf8(json.document());
}

/// How the sender named the metric.
QString nameOf(const CommandMetric& command)
{
    if (!command.name.isEmpty()) return command.name.left(LONGEST_NAME);
    if (!command.alias) return QString();
    return QLatin1String("alias ") + QString::number(*command.alias);
}

bool isRebirth(const CommandMetric& command)
{
    return command.name == QLatin1String(REBIRTH_METRIC) && !command.alias;
}

/// Empty: the command is no yes and no no.
std::optional<bool> truthOf(const CommandMetric& command)
{
    const std::variant<MetricValue, UnfitCommand> value =
        commandValue(command, MetricType::BOOLEAN);
    const MetricValue* const fit = std::get_if<MetricValue>(&value);
    const bool* const truth = fit != nullptr ? std::get_if<bool>(fit) : nullptr;
    return truth != nullptr ? std::optional<bool>(*truth) : std::nullopt;
}

} // namespace

EdgeCommands::EdgeCommands(EdgeMetrics& metrics, PlantCommands& plant, bool takesCommands)
    : m_metrics(metrics),
      m_plant(plant),
      m_takesCommands(takesCommands),
      m_ends(std::make_shared<Ends>())
{
}

bool EdgeCommands::takeOfNode(const QByteArray& payload, const QString& from)
{
    const std::optional<Command> command = decodedCommand(payload);
    if (!command || command->metrics.empty()) {
        refuseMessage(QLatin1String("it is no command"), from);
        return false;
    }
    bool isBirthWanted = false;
    for (const CommandMetric& metric : command->metrics) {
        ++m_taken;
        const std::optional<bool> wanted =
            isRebirth(metric) ? truthOf(metric) : std::optional<bool>();
        if (wanted)
            isBirthWanted = isBirthWanted || *wanted;
        else
            refuse(nullptr, &metric, QLatin1String("no metric of the node takes this"), from);
    }
    return isBirthWanted;
}

void EdgeCommands::takeOfDevice(const QString& device, const QByteArray& payload,
                                const QString& from)
{
    const int found = m_metrics.findDevice(device);
    const std::optional<Command> command = decodedCommand(payload);
    if (found < 0 || !command || command->metrics.empty()) {
        return refuseMessage(found < 0 ? QLatin1String("there is no such device")
                                       : QLatin1String("it is no command"),
                             from);
    }
    for (const CommandMetric& metric : command->metrics) {
        ++m_taken;
        takeMetric(m_metrics.devices()[size_t(found)], metric, from);
    }
}

/// The metric of the device's last birth that the command means, by name, by alias, or by both. A
/// message may hold very many names, so none is looked for by a walk through the device.
const EdgeMetric* EdgeCommands::namedMetric(const EdgeStation& station,
                                            const CommandMetric& command) const
{
    if (command.name.isEmpty() && !command.alias) return nullptr;
    const EdgeMetrics::Place place = command.name.isEmpty()
                                         ? m_metrics.findAlias(*command.alias)
                                         : m_metrics.find(station.link, command.name);
    if (place.device != m_metrics.findStation(station.link, station.station)) return nullptr;
    const EdgeMetric& metric = station.metrics[size_t(place.metric)];
    const bool isOfAlias = !command.alias || metric.alias == *command.alias;
    return metric.isInBirth && isOfAlias ? &metric : nullptr;
}

void EdgeCommands::takeMetric(const EdgeStation& station, const CommandMetric& command,
                              const QString& from)
{
    const auto no = [&](const QString& reason) { refuse(&station, &command, reason, from); };
    if (!m_takesCommands) return no(QLatin1String("commands are not allowed"));
    if (!station.isBorn) return no(QLatin1String("the device does not answer"));
    const EdgeMetric* const metric = namedMetric(station, command);
    if (metric == nullptr) return no(QLatin1String("the device's birth has no such metric"));
    if (metric->tag.access != Tag::READ_WRITE)
        return no(QLatin1String("the metric cannot be written"));
    const std::variant<MetricValue, UnfitCommand> value = commandValue(command, metric->type);
    if (const UnfitCommand* const unfit = std::get_if<UnfitCommand>(&value))
        return no(unfit->problem);
    write(station, *metric, std::get<MetricValue>(value), from);
}

/// The write may end behind the end of this object.
void EdgeCommands::write(const EdgeStation& station, const EdgeMetric& metric,
                         const MetricValue& value, const QString& from)
{
    const std::weak_ptr<Ends> ends = m_ends;
    const auto ended = [ends, link = station.link, number = station.station,
                        tag = metric.tag](const WriteEnd& end) {
        const std::shared_ptr<Ends> all = ends.lock();
        if (!all) return;
        if (end.outcome == WriteEnd::REFUSED) ++all->refused;
        const QByteArray held = valueJson(tag, end.held.bytes);
        all->put({link, number, outcomeText(tag.name, end, held)});
    };
    m_plant.write(station.link, metric.tag.name, value, from, ended);
}

void EdgeCommands::refuseMessage(const QString& reason, const QString& from)
{
    ++m_taken;
    refuse(nullptr, nullptr, reason, from);
}

void EdgeCommands::refuse(const EdgeStation* station, const CommandMetric* command,
                          const QString& reason, const QString& from)
{
    ++m_ends->refused;
    const QString name = command != nullptr ? nameOf(*command) : QString();
    m_plant.refused(name, reason, from);
    if (!m_takesCommands) return; // there is no metric that tells it
    Outcome outcome;
    outcome.text =
        outcomeText(name, {0, WriteEnd::REFUSED, reason, TagReading()}, QByteArrayLiteral("null"));
    if (station != nullptr && station->takesCommands) {
        outcome.link = station->link;
        outcome.station = station->station;
    }
    m_ends->put(outcome);
}

void EdgeCommands::Ends::put(const Outcome& outcome)
{
    if (outcomes.size() >= MOST_OUTCOMES) outcomes.pop_front();
    outcomes.push_back(outcome);
}

std::vector<EdgeCommands::Outcome>
EdgeCommands::takeOutcomes(const std::function<bool(const Outcome&)>& canTell)
{
    std::vector<Outcome> taken;
    for (auto waiting = m_waiting.begin(); waiting != m_waiting.end();) {
        Outcomes& outcomes = waiting->second;
        if (!canTell(outcomes.front())) {
            ++waiting;
            continue;
        }
        m_waitingCount -= outcomes.size();
        std::move(outcomes.begin(), outcomes.end(), std::back_inserter(taken));
        waiting = m_waiting.erase(waiting);
    }
    for (Outcome& outcome : std::exchange(m_ends->outcomes, {})) {
        const bool isBehindOthers = m_waiting.count(tellerOf(outcome)) != 0;
        if (isBehindOthers || !canTell(outcome))
            keep(std::move(outcome));
        else
            taken.push_back(std::move(outcome));
    }
    return taken;
}

/// When there is no room, the oldest outcome of the same device goes first.
void EdgeCommands::keep(Outcome outcome)
{
    const Teller teller = tellerOf(outcome);
    if (m_waitingCount >= MOST_OUTCOMES) {
        auto fuller = m_waiting.find(teller);
        if (fuller == m_waiting.end()) fuller = m_waiting.begin();
        fuller->second.pop_front();
        --m_waitingCount;
        if (fuller->second.empty()) m_waiting.erase(fuller);
    }
    m_waiting[teller].push_back(std::move(outcome));
    ++m_waitingCount;
}

EdgeCommands::Teller EdgeCommands::tellerOf(const Outcome& outcome)
{
    return {outcome.link, outcome.station};
}
