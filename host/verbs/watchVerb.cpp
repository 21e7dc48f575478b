#include "verbs/watchVerb.h"

#include "output/changeLines.h"
#include "output/figuresText.h"
#include "output/outputStream.h"
#include "output/watchScreen.h"
#include "program/interrupt.h"
#include "verbs/watchRows.h"
#include "wire/timeUnits.h"

#include <QJsonDocument>

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace {

enum { REFRESH_MS = 250, DEFAULT_COLUMNS = 80, DEFAULT_ROWS = 24 };

void printLine(const QByteArray& line)
{
    std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
    std::fputc('\n', stdout);
}

/// The output of a watch.
class WatchOutput
{
public:
    virtual ~WatchOutput() = default;
    virtual void show(const News& news, HostProgram& host) = 0;
    virtual void end(const LinkFigures& figures) = 0;
};

class TableOutput : public WatchOutput
{
public:
    explicit TableOutput(const std::vector<Tag>& tags) : m_tags(tags)
    {
        put(WatchScreen::enter());
    }
    ~TableOutput() override
    {
        leave();
    }

    void show(const News&, HostProgram& host) override
    {
        const qint64 now = host.link().now();
        if (now < m_nextFrame) return;
        m_nextFrame = now + REFRESH_MS * MILLISECOND;
        const std::vector<TagState> states = host.values().tags();
        std::vector<WatchRow> rows;
        for (size_t i = 0; i < m_tags.size(); ++i)
            rows.push_back(watchRow(m_tags[i], states[i], now));
        winsize size = {};
        ioctl(STDOUT_FILENO, TIOCGWINSZ, &size);
        put(m_screen.frame(rows, host.values().figures(now),
                           size.ws_col > 0 ? size.ws_col : int(DEFAULT_COLUMNS),
                           size.ws_row > 0 ? size.ws_row : int(DEFAULT_ROWS)));
    }

    void end(const LinkFigures& figures) override
    {
        leave();
        printLine(figuresText(figures).toUtf8());
    }

private:
    /// Leaves the table only once: leaving twice would move the cursor back to its place before the
    /// figures.
    void leave()
    {
        if (!std::exchange(m_left, true)) put(WatchScreen::leave());
    }

    static void put(const QByteArray& bytes)
    {
        std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
        std::fflush(stdout);
    }

    const std::vector<Tag>& m_tags;
    WatchScreen m_screen;
    qint64 m_nextFrame = 0;
    bool m_left = false;
};

class LineOutput : public WatchOutput
{
public:
    LineOutput(const std::vector<Tag>& tags, bool json) : m_tags(tags), m_json(json) {}

    void show(const News& news, HostProgram& host) override
    {
        const TimeText& times = host.times();
        for (const News::LinkEvent& event : news.linkEvents)
            showEvent(event, times);
        for (const News::Change& change : news.changes) {
            const WatchRow row = watchRow(m_tags[size_t(change.tag)], change.state, change.time);
            printLine(m_json ? changeJson(row, change.time, times)
                             : changeLine(row, change.time, times).toUtf8());
        }
        if (news.changesMissed > m_missed)
            std::fprintf(stderr, "kakb-host: %lld changes were not shown\n",
                         static_cast<long long>(news.changesMissed - m_missed));
        m_missed = news.changesMissed;
        std::fflush(stdout);
    }

    void end(const LinkFigures& figures) override
    {
        printLine(m_json ? QJsonDocument(figuresJson(figures)).toJson(QJsonDocument::Compact)
                         : figuresText(figures).toUtf8());
    }

private:
    void showEvent(const News::LinkEvent& event, const TimeText& times)
    {
        const QString text = event.connected ? QString(QLatin1String("link is back"))
                                             : QLatin1String("link lost: ") + event.trouble;
        printLine(m_json ? eventJson(text, event.time, times)
                         : eventLine(text, event.time, times).toUtf8());
    }

    const std::vector<Tag>& m_tags;
    const bool m_json;
    qint64 m_missed = 0;
};

/// Whether the output has failed or has lost its reader. Without this check, a watch with nothing
/// to print would not notice it.
bool isOutputOver()
{
    return std::ferror(stdout) || hasNoReader(STDOUT_FILENO);
}

std::unique_ptr<WatchOutput> chooseOutput(const LinkOptions& options, const std::vector<Tag>& tags)
{
    if (isatty(STDOUT_FILENO) && !options.json && !options.trace)
        return std::unique_ptr<WatchOutput>(new TableOutput(tags));
    return std::unique_ptr<WatchOutput>(new LineOutput(tags, options.json));
}

} // namespace

ExitStatus watch(const DriverLibrary& driver, const LinkOptions& options,
                 const std::vector<Tag>& tags, double seconds)
{
    HostProgram host(driver, options, tags, LinkRun::CYCLIC);
    const qint64 end = qint64(seconds * SECOND);
    if (seconds > 0) endIn(end - host.link().now());
    host.connect();
    const std::unique_ptr<WatchOutput> output = chooseOutput(options, tags);
    while (!isToEnd() && !host.isOver() && !isOutputOver()) {
        const qint64 left = std::max<qint64>(end - host.link().now(), 0);
        const int wait = seconds > 0 ? int(std::min<qint64>(left / MILLISECOND + 1, REFRESH_MS))
                                     : int(REFRESH_MS);
        output->show(host.next(wait), host);
    }
    output->end(host.values().figures(host.link().now()));
    if (host.isOver()) throw VerbFailure(EXIT_LINK, QLatin1String(SIMULATED_PLC_HAS_ENDED));
    return EXIT_DONE;
}
