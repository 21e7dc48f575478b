#ifndef CHANGE_LINES_H
#define CHANGE_LINES_H

#include "output/timeText.h"
#include "output/watchRow.h"

#include <QByteArray>
#include <QJsonValue>

// The lines of a watch for a pipe or a file, without line ends. Times are microseconds since the
// host started.

/// The JSON value of a tag's value: a number when JSON can represent it, otherwise a text; null
/// when the text is empty.
QJsonValue jsonValue(const QString& value);

/// "12.345678  level  MW100 = 17", or "12.345678  level  MW100 bad: " and the reason.
QString changeLine(const WatchRow& row, qint64 time, const TimeText& times = TimeText());

/// A compact object with the time, name, address, value, good and trouble. The value is that of
/// jsonValue(); null: never read.
QByteArray changeJson(const WatchRow& row, qint64 time, const TimeText& times = TimeText());

/// "12.345678  link lost", or another event of the link.
QString eventLine(const QString& event, qint64 time, const TimeText& times = TimeText());

/// A compact object with the time and the event.
QByteArray eventJson(const QString& event, qint64 time, const TimeText& times = TimeText());

#endif
