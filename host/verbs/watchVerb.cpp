#include "verbs/watchVerb.h"

#include "output/changeLines.h"
#include "output/figuresText.h"
#include "output/outputStream.h"
#include "program/interrupt.h"
#include "verbs/csvOutput.h"
#include "verbs/healthCheck.h"
#include "verbs/tableOutput.h"
#include "verbs/watchRows.h"
#include "wire/timeUnits.h"

#include <QJsonDocument>

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace {

enum { LONGEST_WAIT_MS = 250 };

void printLine(const QByteArray& line)
{
    std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
    std::fputc('\n', stdout);
}

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
        const QString text = linkEventText(event);
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

/// The lines of CSV are as far apart as the cycles, or a second where the cycles have no pace.
qint64 csvInterval(const LinkOptions& options)
{
    const qint64 every = options.everyMs.value_or(0) * MILLISECOND;
    return every > 0 ? every : qint64(SECOND);
}

std::unique_ptr<WatchOutput> chooseOutput(const LinkOptions& options, bool csv,
                                          const std::vector<Tag>& tags, const DriverLibrary& driver,
                                          HealthCheck& health)
{
    if (csv) return std::unique_ptr<WatchOutput>(new CsvOutput(tags, csvInterval(options)));
    const bool isCaptureThere = options.pcap == "-"; // then values go to standard error
    if (isatty(STDOUT_FILENO) && !options.json && !options.trace && !isCaptureThere)
        return std::unique_ptr<WatchOutput>(new TableOutput(tags, driver, health));
    return std::unique_ptr<WatchOutput>(new LineOutput(tags, options.json));
}

std::vector<Expectation> expectations(const WatchOptions& options, const std::vector<Tag>& tags,
                                      const DriverLibrary& driver)
{
    std::vector<Expectation> all;
    for (const std::string& text : options.until)
        all.push_back(expectation(QString::fromStdString(text), tags, driver));
    return all;
}

/// The status of a watch that has ended by itself or by the user.
/// @throws VerbFailure unless it is EXIT_DONE
ExitStatus statusOf(const HealthCheck& health, const HostProgram& host)
{
    if (health.isMet()) return EXIT_DONE;
    if (health.failure()) throw VerbFailure(EXIT_UNHEALTHY, *health.failure());
    if (host.isOver()) throw VerbFailure(EXIT_LINK, QLatin1String(SIMULATED_PLC_HAS_ENDED));
    if (!health.hasExpectations()) return EXIT_DONE;
    const bool isInTime = stopRequested() || !isToEnd();
    throw VerbFailure(isInTime ? EXIT_INTERRUPTED : EXIT_UNHEALTHY,
                      QLatin1String(isInTime ? "interrupted before --until came true: "
                                             : "--until did not come true in time: ") +
                          health.openText());
}

ExitStatus watchTags(HostProgram& host, const DriverLibrary& driver, const LinkOptions& options,
                     const std::vector<Tag>& tags, const WatchOptions& watched,
                     const std::vector<Expectation>& expected)
{
    const qint64 end = qint64(watched.seconds * SECOND);
    if (watched.seconds > 0) endIn(end - host.link().now());
    host.connect();
    HealthCheck health(tags, expected, qint64(watched.failWhenBad * SECOND), host.link().now());
    const std::unique_ptr<WatchOutput> output =
        chooseOutput(options, watched.csv, tags, driver, health);
    while (!isToEnd() && !host.isOver() && !isOutputOver() && !output->isOver() &&
           !health.isDecided()) {
        const qint64 left = std::max<qint64>(end - host.link().now(), 0);
        const int wait = watched.seconds > 0
                             ? int(std::min<qint64>(left / MILLISECOND + 1, LONGEST_WAIT_MS))
                             : int(LONGEST_WAIT_MS);
        const News news = output->wait(host, wait);
        if (health.isAsked()) health.judge(news.changes, host.values().tags(), host.link().now());
        output->show(news, host);
    }
    output->end(host.values().figures(host.link().now()));
    return statusOf(health, host);
}

} // namespace

ExitStatus watch(const DriverLibrary& driver, const LinkOptions& options,
                 const std::vector<Tag>& tags, const WatchOptions& watched)
{
    if (watched.seconds > 0 && watched.failWhenBad >= watched.seconds)
        throw VerbFailure(EXIT_USAGE,
                          QLatin1String("--fail-when-bad must be shorter than --seconds: "
                                        "no tag could be bad for so long"));
    const std::vector<Expectation> expected = expectations(watched, tags, driver);
    HostProgram host(driver, options, tags, LinkRun::CYCLIC);
    return host.run([&] { return watchTags(host, driver, options, tags, watched, expected); });
}
