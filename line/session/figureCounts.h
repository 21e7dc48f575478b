#ifndef FIGURE_COUNTS_H
#define FIGURE_COUNTS_H

#include "session/driverExchange.h"
#include "session/linkFigures.h"
#include "session/recentRates.h"
#include "session/runRates.h"

/// Counts a link's figures from what its sink is told. Times are microseconds of one clock that
/// never goes back. Not thread-safe: the owner guards it.
class FigureCounts
{
public:
    void linkChanged(bool connected, qint64 now);
    void exchanged(const FINISHED_EXCHANGE& finished, qint64 now);
    void fenced()
    {
        ++m_totals.fences;
    }
    void wireTaken(qint64 from, qint64 until);

    /// @param now  forgets the exchanges that are no longer recent
    LinkFigures at(qint64 now);

private:
    LinkFigures m_totals; ///< its rates are not used
    bool m_wasConnected = false;
    RunRates m_wholeRun;
    RecentRates m_lately;
};

#endif
