#include "verbs/liveHost.h"

#include "links/serialLink.h"
#include "links/tcpLink.h"
#include "plan/wireCost.h"
#include "verbs/companionFiles.h"
#include "verbs/interrupt.h"
#include "verbs/printing.h"
#include "wire/timeUnits.h"

#include <QDateTime>

#include <algorithm>
#include <cstdio>
#include <random>
#include <set>

namespace {

enum { NEWS_MS = 100 };

QString simulatorProgram(const LinkOptions& options)
{
    return options.simulator.empty() ? companionSimulator()
                                     : QString::fromStdString(options.simulator);
}

/// It serves the stations that the tags are of, at the speed of the line.
QStringList simulatorArguments(const LinkOptions& options, const LinkAddress& address,
                               const std::vector<Tag>& tags)
{
    std::set<int> stations;
    for (const Tag& tag : tags)
        stations.insert(tag.station);
    QStringList arguments;
    for (const int station : stations)
        arguments << QLatin1String("--station") << QString::number(station);
    arguments << QLatin1String("--demo-signals") << QLatin1String("--baud")
              << QString::number(address.line.baud);
    const QString more = QString::fromStdString(options.simulatorArguments).simplified();
    if (!more.isEmpty()) arguments << more.split(QLatin1Char(' '));
    return arguments;
}

JobEnd lost(int job, const QString& trouble)
{
    JobEnd end;
    end.job = job;
    end.outcome = JobEnd::LOST;
    end.trouble = trouble;
    return end;
}

} // namespace

LinkAddress addressOf(const DriverLibrary& driver, const LinkOptions& options)
{
    QString parameter;
    driver.getDriverParameter(&parameter);
    return linkAddress(QString::fromStdString(options.link), linkDefaults(parameter));
}

LineTiming timingOf(const LinkAddress& address)
{
    return address.kind == LinkAddress::NETWORK ? LineTiming::network() : LineTiming(address.line);
}

LiveHost::LiveHost(const DriverLibrary& driver, const LinkOptions& options,
                   const std::vector<Tag>& tags, bool cyclic)
    : m_driver(driver),
      m_options(options),
      m_address(addressOf(driver, options)),
      m_blocks((cyclic ? planReads
                       : shortestReads)(tags, wireCost(timingOf(m_address), options.turnaroundUs),
                                        DriverSession::MOST_READ_WORDS)),
      m_board(tags.size(), options.trace || !options.pcap.empty())
{
    m_communication.emplace(driver, settings(tags), m_board);
    if (options.trace) m_trace.emplace(stderr);
    if (!options.pcap.empty())
        m_capture.emplace(QString::fromStdString(options.pcap),
                          QDateTime::currentMSecsSinceEpoch() * MILLISECOND);
    if (cyclic)
        m_communication->poll(tags, m_blocks);
    else
        m_communication->know(tags, m_blocks);
}

LiveHost::~LiveHost()
{
    m_opening.ask();
    m_communication.reset();
    try {
        record(m_board.takeNews());
    } catch (const PcapError&) {
        // Told when it first could not be written.
    }
    if (m_trace) m_trace->flush();
    tellMissedFrames();
}

Communication::Settings LiveHost::settings(const std::vector<Tag>& tags)
{
    Communication::Settings settings;
    settings.timing = timingOf(m_address);
    settings.exchange.answer = qint64(m_options.timeoutMs) * MILLISECOND;
    settings.exchange.echo = m_options.echo;
    settings.exchange.seed = std::random_device()();
    settings.attempts = m_options.attempts;
    settings.firstPauseMs = m_options.pauseMs;
    settings.reopensWhenSilent = m_address.kind == LinkAddress::NETWORK;
    settings.openLink = opener(tags);
    return settings;
}

Communication::OpenLink LiveHost::opener(const std::vector<Tag>& tags)
{
    const LinkAddress address = m_address;
    switch (address.kind) {
    case LinkAddress::NETWORK:
        return [this, address] {
            return std::unique_ptr<Link>(new TcpLink(address.host, address.port, m_opening));
        };
    case LinkAddress::SERIAL:
        return [address] {
            return std::unique_ptr<Link>(new SerialLink(address.device, address.line));
        };
    default:
        m_simulator.emplace(simulatorProgram(m_options),
                            simulatorArguments(m_options, address, tags));
        return [this, address] { return m_simulator->open(address.line); };
    }
}

ExitStatus LiveHost::run(const std::function<ExitStatus()>& work)
{
    try {
        return work();
    } catch (const VerbFailure& failure) {
        if (m_trace) m_trace->flush();
        printFailure(failure);
        return failure.status;
    }
}

/// Whatever came with the news of the open link is left for the next one who asks.
void LiveHost::connect()
{
    stopOnSignals();
    m_communication->start();
    bool wasOpen = false;
    while (!stopRequested() && !wasOpen) {
        News news = next(NEWS_MS);
        wasOpen = !news.linkEvents.empty() && news.linkEvents.front().connected;
        if (m_linkTrouble && !wasOpen) throw VerbFailure(EXIT_LINK, *m_linkTrouble);
        if (wasOpen) news.linkEvents.erase(news.linkEvents.begin());
        m_early = std::move(news);
    }
}

News LiveHost::next(int ms)
{
    const bool hasEarly = !m_early.changes.empty() || !m_early.linkEvents.empty();
    if (!hasEarly) m_board.waitForNews(ms);
    News news = m_board.takeNews();
    record(news);
    if (news.isEchoFound)
        std::fputs("kakb-host: the link returns what is sent; each request's copy is dropped\n",
                   stderr);
    for (News::LinkEvent& event : news.linkEvents) {
        if (!event.connected && m_simulator) event.trouble = QLatin1String(SIMULATED_PLC_HAS_ENDED);
        m_linkTrouble = event.connected ? std::nullopt : std::make_optional(event.trouble);
    }
    news.changes.insert(news.changes.begin(), m_early.changes.begin(), m_early.changes.end());
    news.linkEvents.insert(news.linkEvents.begin(), m_early.linkEvents.begin(),
                           m_early.linkEvents.end());
    m_early = News();
    return news;
}

/// The capture first: a terminal or a pipe may take the trace only after a while. Frames are missed
/// when the board is full, so a hole is behind those that it had.
void LiveHost::record(const News& news)
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

void LiveHost::tellMissedFrames() const
{
    if (!m_capture || m_framesMissed == 0) return;
    std::fprintf(stderr, "kakb-host: the capture lacks %lld frames: the output was blocked\n",
                 static_cast<long long>(m_framesMissed));
}

JobEnd LiveHost::endOf(int job, const Progress& progress)
{
    while (true) {
        const auto found = m_ends.find(job);
        if (found != m_ends.end()) return found->second;
        if (m_linkTrouble) return lost(job, *m_linkTrouble);
        if (stopRequested()) {
            m_wasInterrupted = true;
            return lost(job, QLatin1String("interrupted; what became of it is not known"));
        }
        const News news = next(NEWS_MS);
        if (progress) progress(news.recipeBlocksDone);
        for (const JobEnd& end : news.jobEnds)
            m_ends[end.job] = end;
    }
}

JobEnd LiveHost::await(int job, const Progress& progress)
{
    const JobEnd end = endOf(job, progress);
    mustBeDone(end);
    return end;
}

ExitStatus LiveHost::statusOf(JobEnd::Outcome outcome) const
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

void LiveHost::mustBeDone(const JobEnd& end) const
{
    if (end.outcome != JobEnd::DONE) throw VerbFailure(statusOf(end.outcome), end.trouble);
}
