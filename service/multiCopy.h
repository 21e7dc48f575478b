#ifndef MULTI_COPY_H
#define MULTI_COPY_H

#include <QString>
#include <QVector>

/// Appends `count` addresses from `start` on, `interval` address numbers apart. Entries past
/// maxAddr become maxAddr and fillText, so that the series keeps its length; each entry is tested
/// by itself, so a falling series can come back into range.
/// @return a SeriesResult
int multiCp(const QString& regName, const QString& format, int start, int count, int interval,
            QVector<QString>& outTexts, QVector<int>& outAddrs, int maxAddr,
            const QString& fillText);

#endif
