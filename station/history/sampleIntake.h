#ifndef SAMPLE_INTAKE_H
#define SAMPLE_INTAKE_H

#include "history/historyIntake.h"
#include "history/secondsThread.h"

/// Tells rows to a listener where no history is kept, by the same rule: HistoryIntake decides what
/// is a row. Nobody keeps the rows.
class SampleIntake : public ValueListener
{
public:
    /// @param overrideMs  a value that does not change is told so often
    SampleIntake(qint64 overrideMs, const StationClock& clock, RowListener* listener);

    /// The links whose qualities are looked at once a second, from the intake's thread.
    void start(HistoryIntake::LinksNow links);

    void tagChanged(const LinkValues& link, int tag, const TagReading& reading) override;

private:
    HistoryIntake m_intake; ///< guards itself
    SecondsThread m_thread; ///< ends before the intake does
};

#endif
