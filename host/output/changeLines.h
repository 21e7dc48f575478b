#ifndef CHANGE_LINES_H
#define CHANGE_LINES_H

#include "output/watchRow.h"

#include <QByteArray>
#include <QJsonValue>

// What a watch tells a pipe or a file, one line a piece of news; the lines come without their end.
// Times are microseconds since the host started, and are shown in seconds.

/// A tag's value: a number where JSON has one for it, else a text; null for none.
QJsonValue jsonValue(const QString& value);

/// "12.345678  level  MW100 = 17", or "12.345678  level  MW100 bad: " and why.
QString changeLine(const WatchRow& row, qint64 time);

/// One compact object with time, name, address, value, good and trouble. The value is a number
/// where JSON has one for it, else a text; null when it was never read.
QByteArray changeJson(const WatchRow& row, qint64 time);

/// "12.345678  link lost", or whatever else befell the link.
QString eventLine(const QString& event, qint64 time);

/// One compact object with time and event.
QByteArray eventJson(const QString& event, qint64 time);

#endif
