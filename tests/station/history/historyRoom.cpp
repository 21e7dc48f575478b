#include "historyRoom.h"

#include <QtEndian>

#include <cstring>

HistoryRoom::HistoryRoom(const std::vector<Tag>& linkTags, qint64 capBytes)
    : begin(clock.wall()), tags(linkTags), cap(capBytes)
{
    startStation();
}

void HistoryRoom::startStation()
{
    const qint64 turn = 100000; // microseconds
    link = std::make_shared<LinkValues>(QLatin1String("plc"), tags, clock);
    link->setTurns(std::vector<std::optional<qint64>>(tags.size(), turn));
    link->addListener(this);
    intake =
        std::make_unique<HistoryIntake>(HistoryIntake::Limits{OVERRIDE_MS, cap.waitingRows}, clock);
    reader = std::make_unique<HistoryReader>(fileName());
    writer = std::make_unique<HistoryWriter>(fileName(), cap, *intake, *reader, clock);
}

void HistoryRoom::kill()
{
    writer.reset();
    reader.reset();
    intake.reset();
    link.reset();
}

void HistoryRoom::turn()
{
    intake->look({link});
    writer->turn();
}

void HistoryRoom::second()
{
    clock.passMs(1000);
    turn();
}

void HistoryRoom::seconds(int count)
{
    for (int i = 0; i < count; ++i)
        second();
}

void HistoryRoom::answer(int tag, double number)
{
    link->tagRead(tag, answerBytes(tags[size_t(tag)], number), clock.steady());
}

void HistoryRoom::bad(int tag, const QString& trouble)
{
    link->tagsBad({tag}, trouble, clock.steady());
}

void HistoryRoom::tagChanged(const LinkValues& values, int tag, const TagReading& reading)
{
    intake->tagChanged(values, tag, reading);
}

QString HistoryRoom::fileName() const
{
    return folder.filePath(QLatin1String("history.sqlite"));
}

std::vector<HistoryBucket> HistoryRoom::buckets(qint64 from, qint64 until, int points,
                                                int tag) const
{
    HistoryReader other(fileName());
    return other.buckets(
        {QLatin1String("plc"), tags[size_t(tag)].name, begin + from, begin + until, points});
}

std::string HistoryRoom::lasts(qint64 from, qint64 until, int points, int tag) const
{
    QStringList words;
    for (const HistoryBucket& bucket : buckets(from, until, points, tag))
        words << (bucket.isGood ? QString::number(bucket.last) : QStringLiteral("-"));
    return words.join(QLatin1Char(' ')).toStdString();
}

std::string HistoryRoom::rows(int tag) const
{
    HistoryReader other(fileName());
    const HistoryQuery all{QLatin1String("plc"), tags[size_t(tag)].name, 0, begin * 2, 1};
    QStringList words;
    for (const HistoryRow& row : other.rows(all, 0, 1000000)) {
        const QString value = row.hasValue ? QString::number(row.value) : QStringLiteral("none");
        words << QString::number(row.time - begin) + QLatin1Char(' ') + value + QLatin1Char(' ') +
                     QLatin1String(qualityText(row.quality));
    }
    return words.join(QLatin1String(", ")).toStdString();
}

std::vector<Tag> historyTags(int count, Tag::Type type)
{
    std::vector<Tag> tags;
    for (int i = 0; i < count; ++i) {
        Tag tag;
        tag.name = QLatin1String("tag") + QString::number(i);
        tag.type = type;
        tag.area = QLatin1String("MW");
        tag.address = QString::number(i);
        tags.push_back(tag);
    }
    return tags;
}

QByteArray answerBytes(const Tag& tag, double number)
{
    quint32 bits = 0;
    const float value = float(number);
    if (tag.type == Tag::FLOAT32)
        std::memcpy(&bits, &value, sizeof bits);
    else
        bits = quint32(qint64(number));
    bits = qToLittleEndian(bits);
    const int size = tag.isBit() ? 1 : 2 * tag.units();
    return QByteArray(reinterpret_cast<const char*>(&bits), size);
}
