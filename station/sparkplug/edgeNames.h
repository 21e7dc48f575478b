#ifndef EDGE_NAMES_H
#define EDGE_NAMES_H

#include "plant/edgeDevice.h"

#include <QStringList>

/// The ids of devices in topics: LINK-STATION, in the order of the devices. They are made of the
/// links' names as topicLevels() says, so no two are alike, not even without regard to case.
std::vector<QString> deviceIds(const std::vector<EdgeDevice>& devices);

/// Why hosts cannot take these tags for metrics, a sentence each: two names of a device differ by
/// case alone, a folder is a metric, too, or a name is one of the node's own.
QStringList metricNameProblems(const std::vector<EdgeDevice>& devices);

/// The topics of an edge node.
///
///     spBv1.0/GROUP/KIND/NODE             of the node
///     spBv1.0/GROUP/KIND/NODE/DEVICE      of a device
///     kakb-mark/GROUP/NODE                proves what the broker has; nothing of our own may stand
///                                         below spBv1.0/, and kakb/ is the JSON dialect's
class EdgeTopics
{
public:
    EdgeTopics(const QString& group, const QString& node);

    QString ofNode(const char* kind) const;
    QString ofDevice(const char* kind, const QString& device) const;
    QString mark() const;

private:
    QString m_group, m_node;
};

/// The metric that tells the ends of commands, of the node and of devices that take commands.
extern const char OUTCOME_METRIC[];

#endif
