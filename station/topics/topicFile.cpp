#include "topics/topicFile.h"

#include "plant/durableFile.h"

#include <QFile>

#include <utility>

namespace {

/// Longer than the topics of all tags that a station can have; what is longer is not ours.
enum { LONGEST_FILE = 64 * 1024 * 1024 };

} // namespace

TopicFile::TopicFile(QString fileName) : m_fileName(std::move(fileName)) {}

std::set<QString> TopicFile::read() const
{
    std::set<QString> topics;
    QFile file(m_fileName);
    if (m_fileName.isEmpty() || !file.open(QIODevice::ReadOnly) || file.size() > LONGEST_FILE)
        return topics;
    for (const QByteArray& line : file.readAll().split('\n'))
        if (!line.isEmpty()) topics.insert(QString::fromUtf8(line));
    return topics;
}

void TopicFile::write(const std::set<QString>& topics)
{
    if (m_fileName.isEmpty() || topics == m_written) return;
    QByteArray text;
    for (const QString& topic : topics)
        text += topic.toUtf8() + '\n';
    if (writeDurably(m_fileName, text).isEmpty()) m_written = topics;
}
