#include "session/figureCounts.h"

#include <utility>

void FigureCounts::linkChanged(bool connected, qint64 now)
{
    if (m_totals.connected && !connected) ++m_totals.losses;
    m_totals.connected = connected;
    if (connected && !std::exchange(m_wasConnected, true)) {
        m_wholeRun.start(now);
        m_lately.start(now);
    }
}

void FigureCounts::exchanged(const FINISHED_EXCHANGE& finished, qint64 now)
{
    if (finished.result == REPLY_RETRY) {
        ++m_totals.retries;
        return;
    }
    ++m_totals.exchanges;
    if (finished.end == END_REFUSED) {
        ++m_totals.refusals;
    } else if (finished.result == REPLY_GIVEN_UP) {
        ++m_totals.giveUps;
        return;
    }
    m_wholeRun.exchanged(finished.replyTime);
    m_lately.exchanged(finished.replyTime, now);
}

void FigureCounts::wireTaken(qint64 from, qint64 until)
{
    m_wholeRun.wireTaken(from, until);
    m_lately.wireTaken(from, until);
}

LinkFigures FigureCounts::at(qint64 now)
{
    LinkFigures figures = m_totals;
    figures.wholeRun = m_wholeRun.at(now);
    figures.lately = m_lately.at(now);
    return figures;
}
