#include "program/hostProgram.h"

#include "driver/companionFiles.h"
#include "program/interrupt.h"
#include "program/printing.h"
#include "program/simulatorStart.h"
#include "program/tableTerminal.h"
#include "wire/timeUnits.h"

#include <QDateTime>

#include <cstdio>

namespace {

enum { NEWS_MS = 100 };

/// The end of a job that the link's thread never heard of.
JobEnd neverStarted(int job)
{
    JobEnd end;
    end.job = job;
    end.outcome = JobEnd::LOST;
    end.execution = JobEnd::NOT_SENT;
    end.trouble = end.reason = QLatin1String("not started");
    return end;
}

} // namespace

LinkAddress addressOf(const DriverLibrary& driver, const LinkOptions& options)
{
    return linkAddress(QString::fromStdString(options.link), driver);
}

HostProgram::HostProgram(const DriverLibrary& driver, const LinkOptions& options,
                         const std::vector<Tag>& tags, LinkRun::Reading reading)
    : m_driver(driver),
      m_options(options),
      m_values(tags.size(), options.trace || !options.pcap.empty())
{
    stopOnSignals();
    m_run.emplace(driver, settings(tags, reading), tags, m_values);
    const qint64 startClock =
        QDateTime::currentMSecsSinceEpoch() * qint64(MILLISECOND) - m_run->now();
    m_times = TimeText(options.time, startClock);
    if (options.trace) m_trace.emplace(stderr, m_times);
    if (!options.pcap.empty()) openCapture(startClock);
}

HostProgram::~HostProgram()
{
    m_run.reset();
    if (m_trace) m_trace->flush();
    tellMissedFrames();
}

void HostProgram::openCapture(qint64 startClock)
{
    try {
        m_capture.emplace(QString::fromStdString(m_options.pcap), startClock, stopRequested);
    } catch (const PcapError& error) {
        if (!stopRequested()) throw;
        throw VerbFailure(EXIT_INTERRUPTED, QString::fromUtf8(error.what()));
    }
}

LinkRun::Settings HostProgram::settings(const std::vector<Tag>& tags, LinkRun::Reading reading)
{
    LinkRun::Settings settings;
    settings.address = addressOf(m_driver, m_options);
    settings.reading = reading;
    settings.timeoutMs = m_options.timeoutMs;
    settings.attempts = m_options.attempts;
    settings.pauseMs = m_options.pauseMs;
    settings.turnaroundUs = m_options.turnaroundUs;
    settings.mostGap = m_options.mostGap;
    settings.paceMs = m_options.everyMs;
    settings.echo = m_options.echo;
    settings.holdMs = m_options.holdMs;
    if (settings.address.kind == LinkAddress::SIMULATED) {
        const LineSettings line = settings.address.line;
        m_simulator.emplace(simulatorProgram(m_options), simulatorArguments(m_options, line, tags));
        settings.opening = [this, line] { return m_simulator->open(line); };
    }
    return settings;
}

ExitStatus HostProgram::run(const std::function<ExitStatus()>& work)
{
    ExitStatus status = EXIT_DONE;
    try {
        status = work();
    } catch (const VerbFailure& failure) {
        if (m_trace) m_trace->flush();
        printFailure(failure);
        status = failure.status;
    }
    try {
        stop(QLatin1String("the verb has ended"));
    } catch (const PcapError& error) {
        if (status == EXIT_DONE) throw;
        printFailure(error);
    }
    return status;
}

/// Records the last frames: they may come while the link's thread ends.
void HostProgram::stop(const QString& why)
{
    m_run->stop(why);
    takeEnds(next(0));
    m_isStopped = true;
}

void HostProgram::tell(const QString& sentence)
{
    if (m_trace) m_trace->flush();
    std::fprintf(stderr, "kakb-host: %s\n", qUtf8Printable(sentence));
}

/// News that came together with the open link is kept for the next call of next().
void HostProgram::connect()
{
    {
        const SignalsBlocked forTheLinksThread;
        m_run->start();
    }
    bool wasOpen = false;
    while (!stopRequested() && !wasOpen) {
        News news = next(NEWS_MS);
        wasOpen = !news.linkEvents.empty() && news.linkEvents.front().connected;
        if (m_linkTrouble && !wasOpen) throw VerbFailure(EXIT_LINK, *m_linkTrouble);
        if (wasOpen) news.linkEvents.erase(news.linkEvents.begin());
        m_early = std::move(news);
    }
}

News HostProgram::next(int ms)
{
    const bool hasEarly = !m_early.changes.empty() || !m_early.linkEvents.empty();
    if (!hasEarly) m_values.waitForNews(ms);
    News news = m_values.takeNews();
    record(news);
    if (news.isEchoFound)
        std::fputs("kakb-host: the link returns what is sent; each request's copy is dropped\n",
                   stderr);
    for (const News::LinkEvent& event : news.linkEvents)
        m_linkTrouble = event.connected ? std::nullopt : std::make_optional(event.trouble);
    news.changes.insert(news.changes.begin(), m_early.changes.begin(), m_early.changes.end());
    news.linkEvents.insert(news.linkEvents.begin(), m_early.linkEvents.begin(),
                           m_early.linkEvents.end());
    m_early = News();
    return news;
}

/// Writes the capture before the trace, because a terminal or a pipe may delay the trace. The
/// frames that were dropped come after the frames in the news.
void HostProgram::record(const News& news)
{
    const qint64 missed = news.framesMissed - m_framesMissed;
    m_framesMissed = news.framesMissed;
    if (m_capture) {
        for (const FrameRecord& frame : news.frames)
            m_capture->add(frame);
        if (missed > 0) m_capture->addHole();
    }
    if (!m_trace) return;
    for (const FrameRecord& frame : news.frames)
        m_trace->add(frame);
    if (missed > 0) m_trace->addHole(missed);
}

void HostProgram::tellMissedFrames() const
{
    if (!m_capture || m_framesMissed == 0) return;
    std::fprintf(stderr, "kakb-host: the capture lacks %lld frames: the output was blocked\n",
                 static_cast<long long>(m_framesMissed));
}

/// When the jobs cannot go on, the link is stopped: only then nothing more is sent, and the ends of
/// the jobs say for sure which writes went out.
JobEnd HostProgram::endOf(int job, const Progress& progress)
{
    while (true) {
        const auto found = m_ends.find(job);
        if (found != m_ends.end()) return found->second;
        if (m_isStopped) return neverStarted(job);
        if (m_linkTrouble) {
            stop(*m_linkTrouble);
        } else if (stopRequested()) {
            m_wasInterrupted = true;
            stop(QLatin1String("interrupted"));
        } else {
            const News news = next(NEWS_MS);
            if (progress) progress(news.recipeBlocksDone);
            takeEnds(news);
        }
    }
}

void HostProgram::takeEnds(const News& news)
{
    for (const JobEnd& end : news.jobEnds)
        m_ends[end.job] = end;
}

JobEnd HostProgram::await(int job, const Progress& progress)
{
    const JobEnd end = endOf(job, progress);
    mustBeDone(end);
    return end;
}

ExitStatus HostProgram::statusOf(JobEnd::Outcome outcome) const
{
    switch (outcome) {
    case JobEnd::REFUSED:
        return EXIT_REFUSED;
    case JobEnd::TIMED_OUT:
        return EXIT_TIME_OUT;
    default:
        return m_wasInterrupted ? EXIT_INTERRUPTED : EXIT_LINK;
    }
}

void HostProgram::mustBeDone(const JobEnd& end) const
{
    if (end.outcome != JobEnd::DONE) throw VerbFailure(statusOf(end.outcome), end.trouble);
}
