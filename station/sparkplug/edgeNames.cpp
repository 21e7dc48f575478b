#include "sparkplug/edgeNames.h"

#include "broker/topicLevels.h"

#include <QHash>

const char OUTCOME_METRIC[] = "Commands/Outcome";

namespace {

/// The first spelling of each name and of each folder, by its text without case.
struct Spellings
{
    QHash<QString, QString> names;
    QHash<QString, QString> folders; ///< and a name below each
};

QString quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

void noteFolders(const QString& name, Spellings& spellings)
{
    for (auto at = name.indexOf(QLatin1Char('/')); at >= 0;
         at = name.indexOf(QLatin1Char('/'), at + 1)) {
        const QString folder = name.left(at).toCaseFolded();
        if (!spellings.folders.contains(folder)) spellings.folders.insert(folder, name);
    }
}

/// @return why the name cannot stand beside those before it; empty: it can
QString nameProblem(const QString& name, const Spellings& spellings)
{
    const QString key = name.toCaseFolded();
    const auto same = spellings.names.constFind(key);
    if (same == spellings.names.constEnd()) return QString();
    if (*same == QLatin1String(OUTCOME_METRIC))
        return QString(QLatin1String("%1 is the metric that tells the ends of commands"))
            .arg(quoted(name));
    return QString(QLatin1String("%1 and %2 differ by case alone"))
        .arg(quoted(*same), quoted(name));
}

QString folderProblem(const QString& name, const Spellings& spellings)
{
    const auto below = spellings.folders.constFind(name.toCaseFolded());
    if (below == spellings.folders.constEnd()) return QString();
    return QString(QLatin1String("%1 is a metric and the folder of %2"))
        .arg(quoted(name), quoted(*below));
}

QStringList problemsOf(const EdgeDevice& device)
{
    const QString where = QString(QLatin1String("link %1, station %2: "))
                              .arg(device.link, QString::number(device.station));
    Spellings spellings;
    const QString own = QLatin1String(OUTCOME_METRIC);
    spellings.names.insert(own.toCaseFolded(), own);
    noteFolders(own, spellings);
    QStringList problems;
    for (const Tag& tag : device.tags) {
        const QString problem = nameProblem(tag.name, spellings);
        if (!problem.isEmpty()) problems << where + problem;
        spellings.names.insert(tag.name.toCaseFolded(), tag.name);
        noteFolders(tag.name, spellings);
    }
    for (const Tag& tag : device.tags) {
        const QString problem = folderProblem(tag.name, spellings);
        if (!problem.isEmpty()) problems << where + problem;
    }
    return problems;
}

} // namespace

std::vector<QString> deviceIds(const std::vector<EdgeDevice>& devices)
{
    std::vector<QString> links;
    QHash<QString, size_t> places;
    for (const EdgeDevice& device : devices) {
        if (places.contains(device.link)) continue;
        places.insert(device.link, links.size());
        links.push_back(device.link);
    }
    const std::vector<QString> levels = topicLevels(links);
    std::vector<QString> ids;
    for (const EdgeDevice& device : devices) {
        ids.push_back(QString(QLatin1String("%1-%2"))
                          .arg(levels[places.value(device.link)], QString::number(device.station)));
    }
    return ids;
}

QStringList metricNameProblems(const std::vector<EdgeDevice>& devices)
{
    QStringList problems;
    for (const EdgeDevice& device : devices)
        problems << problemsOf(device);
    return problems;
}

EdgeTopics::EdgeTopics(const QString& group, const QString& node)
    : m_group(topicLevel(group)), m_node(topicLevel(node))
{
}

QString EdgeTopics::ofNode(const char* kind) const
{
    return QString(QLatin1String("spBv1.0/%1/%2/%3")).arg(m_group, QLatin1String(kind), m_node);
}

QString EdgeTopics::ofDevice(const char* kind, const QString& device) const
{
    return ofNode(kind) + QLatin1Char('/') + device;
}

QString EdgeTopics::mark() const
{
    return QString(QLatin1String("kakb-mark/%1/%2")).arg(m_group, m_node);
}
