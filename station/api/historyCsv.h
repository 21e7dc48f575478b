#ifndef HISTORY_CSV_H
#define HISTORY_CSV_H

#include "api/backgroundWork.h"
#include "history/historyRow.h"
#include "http/httpMessages.h"
#include "plan/tag.h"

#include <memory>

/// The rows of some tags as CSV, a page at a time, tag after tag, oldest first. One thread at a
/// time uses it.
class HistoryCsv
{
public:
    enum { PAGE_ROWS = 500 };

    struct Series
    {
        HistoryQuery query;
        Tag tag;
    };

    /// The rows of the history, see History::rows().
    using Rows =
        std::function<std::vector<HistoryRow>(const HistoryQuery& query, qint64 after, int most)>;

    HistoryCsv(std::vector<Series> series, Rows rows);

    /// The next lines; empty: there are no more.
    QByteArray nextPage();

private:
    const std::vector<Series> m_series;
    const Rows m_rows;
    bool m_hasHead = false;
    size_t m_at = 0;      ///< in m_series
    HistoryQuery m_query; ///< what is left of the series
    qint64 m_after = 0;
};

/// Sends the CSV while it is read: one page is held, however long the history is. Pages are made
/// in the background, only when the client has taken the page before.
/// @param wake  called after each page, from the background's thread
std::shared_ptr<HttpBody> historyCsvBody(HistoryCsv csv, std::shared_ptr<BackgroundWork> work,
                                         std::function<void()> wake);

#endif
