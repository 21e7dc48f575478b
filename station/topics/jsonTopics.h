#ifndef JSON_TOPICS_H
#define JSON_TOPICS_H

#include "plant/edgeDevice.h"

#include <QHash>
#include <QPair>

/// The topics of the JSON dialect for one configuration. Their levels are made of names as
/// topicLevels() says: those of links over the node, those of tags over their link.
class JsonTopics
{
public:
    /// @param node  as configured
    JsonTopics(const QString& node, const std::vector<EdgeDevice>& devices);

    QString status() const;

    /// What is subscribed, with wildcards.
    QString sets() const;

    /// Of links and tags of the configuration.
    QString availability(const QString& link, int station) const;
    QString state(const QString& link, const QString& tag) const;

    /// Whether the topic has the shape of an availability or a state of this node.
    bool isRetained(const QString& topic) const;

private:
    QString ofLink(const QString& link) const;

    QString m_prefix;                 ///< kakb/NODE/
    QHash<QString, QString> m_levels; ///< of links
    QHash<QPair<QString, QString>, QString> m_tagLevels;
};

#endif
