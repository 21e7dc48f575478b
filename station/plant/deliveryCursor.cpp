#include "plant/deliveryCursor.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QIODevice>

namespace {

const char MAGIC[] = "kakb-cursor-1\n";
enum { CHECK_BYTES = 32, MAGIC_BYTES = sizeof MAGIC - 1 };

QByteArray checkOf(const QByteArray& body)
{
    return QCryptographicHash::hash(body, QCryptographicHash::Sha256);
}

void writeHeld(QDataStream& stream, const HeldRows& held)
{
    stream << quint32(held.all().size());
    for (const auto& [tag, ranges] : held.all()) {
        stream << tag.first << tag.second << quint32(ranges.size());
        for (const HeldRows::Range& range : ranges)
            stream << range.first << range.last << range.rows;
    }
}

void readHeld(QDataStream& stream, HeldRows& held)
{
    quint32 tags = 0;
    stream >> tags;
    for (quint32 i = 0; i < tags && stream.status() == QDataStream::Ok; ++i) {
        HeldRows::Tag tag;
        quint32 ranges = 0;
        stream >> tag.first >> tag.second >> ranges;
        for (quint32 j = 0; j < ranges && stream.status() == QDataStream::Ok; ++j) {
            HeldRows::Range range;
            stream >> range.first >> range.last >> range.rows;
            held.put(tag, range);
        }
    }
}

} // namespace

QByteArray cursorBytes(const DeliveryCursor& cursor)
{
    QByteArray body;
    QDataStream stream(&body, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_5_15);
    stream << cursor.file << cursor.top << cursor.end << cursor.dropped;
    stream << quint32(cursor.owed.ranges().size());
    for (const auto& [first, last] : cursor.owed.ranges())
        stream << first << last;
    writeHeld(stream, cursor.held);
    return MAGIC + checkOf(body) + body;
}

/// The check goes first: bytes that are not ours name no number of anything.
std::optional<DeliveryCursor> cursorOf(const QByteArray& bytes)
{
    const QByteArray body = bytes.mid(MAGIC_BYTES + CHECK_BYTES);
    if (!bytes.startsWith(MAGIC) || bytes.mid(MAGIC_BYTES, CHECK_BYTES) != checkOf(body))
        return std::nullopt;
    DeliveryCursor cursor;
    QDataStream stream(body);
    stream.setVersion(QDataStream::Qt_5_15);
    quint32 ranges = 0;
    stream >> cursor.file >> cursor.top >> cursor.end >> cursor.dropped >> ranges;
    for (quint32 i = 0; i < ranges && stream.status() == QDataStream::Ok; ++i) {
        qint64 first = 0, last = 0;
        stream >> first >> last;
        cursor.owed.add(first, last);
    }
    readHeld(stream, cursor.held);
    if (stream.status() != QDataStream::Ok) return std::nullopt;
    return cursor;
}
