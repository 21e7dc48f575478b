#include "api/historyCsv.h"

#include "api/historyText.h"

#include <algorithm>
#include <cstring>

namespace {

/// A page on its way from the background to the client.
///
///   IDLE --- the client wants bytes ---> ASKED --- the background made it ---> READY
///    ^                                                                           |
///    +------------------------- the HTTP thread took it -------------------------+
///
/// A page that is READY and empty is the end.
struct PageOnItsWay
{
    enum State { IDLE, ASKED, READY };

    PageOnItsWay(HistoryCsv&& source, std::function<void()> waking)
        : csv(std::move(source)), wake(std::move(waking))
    {
    }

    HistoryCsv csv; ///< of the background's thread

    std::mutex mutex;           ///< guards all members below
    std::function<void()> wake; ///< empty: the client has gone, and the server perhaps, too
    State state = IDLE;
    QByteArray page;
};

void makePage(PageOnItsWay& way)
{
    const QByteArray page = way.csv.nextPage();
    const std::lock_guard<std::mutex> lock(way.mutex);
    way.page = page;
    way.state = PageOnItsWay::READY;
    if (way.wake) way.wake();
}

class CsvBody : public HttpBody
{
public:
    CsvBody(HistoryCsv&& csv, std::shared_ptr<BackgroundWork> work, std::function<void()> wake)
        : m_way(std::make_shared<PageOnItsWay>(std::move(csv), std::move(wake))),
          m_work(std::move(work))
    {
    }
    ~CsvBody() override
    {
        const std::lock_guard<std::mutex> lock(m_way->mutex);
        m_way->wake = nullptr;
    }
    CsvBody(const CsvBody&) = delete;
    CsvBody& operator=(const CsvBody&) = delete;

    qint64 read(char* to, size_t size) override
    {
        if (m_sent == m_page.size()) {
            if (!takePage()) return NOTHING_YET;
            if (m_page.isEmpty()) return END;
        }
        const size_t left = size_t(m_page.size()) - size_t(m_sent);
        const size_t count = std::min(left, size);
        std::memcpy(to, m_page.constData() + m_sent, count);
        m_sent += int(count);
        return qint64(count);
    }

private:
    /// @return false: the page is still made
    bool takePage()
    {
        const std::lock_guard<std::mutex> lock(m_way->mutex);
        if (m_way->state == PageOnItsWay::READY) {
            m_page = std::move(m_way->page);
            m_sent = 0;
            m_way->state = PageOnItsWay::IDLE;
            return true;
        }
        if (m_way->state == PageOnItsWay::IDLE && ask()) m_way->state = PageOnItsWay::ASKED;
        return false;
    }

    /// Nobody reads the page of a client that has gone.
    bool ask()
    {
        return m_work->add([way = std::weak_ptr<PageOnItsWay>(m_way)] {
            const std::shared_ptr<PageOnItsWay> wanted = way.lock();
            if (wanted) makePage(*wanted);
        });
    }

    const std::shared_ptr<PageOnItsWay> m_way;
    const std::shared_ptr<BackgroundWork> m_work;
    QByteArray m_page;
    int m_sent = 0; ///< of m_page
};

} // namespace

HistoryCsv::HistoryCsv(std::vector<Series> series, Rows rows)
    : m_series(std::move(series)), m_rows(std::move(rows))
{
    if (!m_series.empty()) m_query = m_series.front().query;
}

QByteArray HistoryCsv::nextPage()
{
    QByteArray page;
    if (!m_hasHead) page = historyCsvHead();
    m_hasHead = true;
    while (m_at < m_series.size()) {
        const std::vector<HistoryRow> rows = m_rows(m_query, m_after, PAGE_ROWS);
        for (const HistoryRow& row : rows)
            page += historyCsvLine(m_query, m_series[m_at].tag, row);
        if (!rows.empty()) {
            m_query.from = rows.back().time;
            m_after = rows.back().sequence;
            return page;
        }
        m_after = 0;
        if (++m_at < m_series.size()) m_query = m_series[m_at].query;
    }
    return page;
}

std::shared_ptr<HttpBody> historyCsvBody(HistoryCsv csv, std::shared_ptr<BackgroundWork> work,
                                         std::function<void()> wake)
{
    return std::make_shared<CsvBody>(std::move(csv), std::move(work), std::move(wake));
}
