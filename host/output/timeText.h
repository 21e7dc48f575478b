#ifndef TIME_TEXT_H
#define TIME_TEXT_H

#include <QJsonObject>
#include <QString>

/// How lines and objects show a time. Times are microseconds since the host started. That clock
/// never goes back. Dates are computed from it and from one look at the wall clock at the start, so
/// the distances between two dates are right even when the wall clock is set meanwhile.
class TimeText
{
public:
    enum Style {
        RELATIVE, ///< "12.345678": seconds since the host started
        ISO,      ///< "2026-03-01T09:15:02.345Z": UTC, milliseconds
        LOCAL     ///< "2026-03-01T10:15:02.345+01:00": local time with its offset from UTC
    };

    /// @param startClock  wall clock when the host started, in microseconds since 1970 (UTC)
    explicit TimeText(Style style = RELATIVE, qint64 startClock = 0)
        : m_style(style), m_startClock(startClock)
    {
    }

    QString text(qint64 time) const;

    /// The text, with seconds aligned for a column of times of up to a day.
    QString columnText(qint64 time) const;

    /// Adds the time to an object: "timeS", the seconds as a number, or "time", the date as a text.
    /// @param time  negative: the value is null
    void insertInto(QJsonObject& object, qint64 time) const;

private:
    Style m_style;
    qint64 m_startClock;
};

#endif
