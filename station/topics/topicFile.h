#ifndef TOPIC_FILE_H
#define TOPIC_FILE_H

#include <QString>

#include <set>

/// The retained topics that a broker may hold of this station, over restarts: a text with a topic a
/// line.
class TopicFile
{
public:
    /// @param fileName  empty: nothing is kept
    explicit TopicFile(QString fileName);

    /// Whatever the lines hold. Empty without a file.
    std::set<QString> read() const;

    /// Durably, when the topics differ from those of the last write. A file that cannot be written
    /// costs no more than topics which stay at the broker.
    void write(const std::set<QString>& topics);

private:
    const QString m_fileName;
    std::set<QString> m_written;
};

#endif
