#include "verbs/scanVerb.h"

#include "links/openLink.h"
#include "links/simulatedPlc.h"
#include "links/wakeableWait.h"
#include "output/frameTrace.h"
#include "program/hostProgram.h"
#include "program/interrupt.h"
#include "program/printing.h"
#include "program/simulatorStart.h"
#include "session/stationScan.h"
#include "wire/timeUnits.h"

#include <QDateTime>
#include <QElapsedTimer>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <random>

namespace {

enum { REFRESH_MS = 100 };

/// Tells how far the scan is: on a terminal one line that is drawn anew, otherwise only the time
/// that the scan may take.
class ScanProgress
{
public:
    ScanProgress(int stations, qint64 longestTime)
    {
        std::fprintf(stderr, "kakb-host: asking %d station%s; this takes %.1f s at most\n",
                     stations, stations == 1 ? "" : "s", double(longestTime) / SECOND);
    }
    ~ScanProgress()
    {
        clear();
    }

    void show(int asked, int mostAsked)
    {
        if (!m_isTerminal) return;
        std::fprintf(stderr, "\r\x1b[K%d of at most %d questions", asked, mostAsked);
        std::fflush(stderr);
    }

    /// Makes room for another line on the terminal.
    void clear() const
    {
        if (m_isTerminal) std::fputs("\r\x1b[K", stderr);
    }

private:
    const bool m_isTerminal = isatty(STDERR_FILENO) == 1;
};

/// A scan of one open link.
class LinkScan
{
public:
    LinkScan(Link& link, const LinkAddress& address, const LinkOptions& options,
             const std::vector<int>& stations)
        : m_link(link),
          m_address(address),
          m_isJson(options.json),
          m_scan(timingOf(address), settings(options, stations))
    {
        if (options.trace)
            m_trace.emplace(
                stderr, TimeText(options.time, QDateTime::currentMSecsSinceEpoch() * MILLISECOND));
        m_clock.start();
    }

    static StationScan::Settings settings(const LinkOptions& options,
                                          const std::vector<int>& stations)
    {
        StationScan::Settings made;
        made.stations = stations;
        made.attempts = options.attempts;
        made.exchange.answer = qint64(options.timeoutMs) * MILLISECOND;
        made.exchange.echo = options.echo;
        made.exchange.seed = std::random_device()();
        return made;
    }

    /// @return the number of stations found, also when the user ends the scan
    int run(ScanProgress& progress)
    {
        int found = 0;
        while (!m_scan.isOver() && !isToEnd()) {
            step();
            for (const StationScan::Found& one : m_scan.takeFound()) {
                progress.clear();
                print(one);
                ++found;
            }
            progress.show(m_scan.asked(), m_scan.mostAsked());
        }
        progress.clear();
        for (const int station : m_scan.unclear())
            std::fprintf(stderr,
                         "kakb-host: station %d: bytes came that are no answer: noise, "
                         "another speed or parity, or two stations with this number\n",
                         station);
        if (m_trace) m_trace->flush();
        return found;
    }

private:
    qint64 now() const
    {
        return m_clock.nsecsElapsed() / NANOSECONDS_PER_MICROSECOND;
    }

    void step()
    {
        const ExchangeMachine::Step step = m_scan.advance(now());
        if (!step.send.isEmpty()) {
            m_link.write(step.send);
            trace(FrameRecord::SENT_FENCE, step.send);
        }
        if (m_scan.isOver()) return;
        const qint64 left = std::max<qint64>(step.wakeAt - now(), 0);
        const qint64 longest = qint64(REFRESH_MS) * MILLISECOND; // then a signal is noticed
        if (!m_wait.wait(m_link.descriptor(), std::min(left, longest))) return;
        const QByteArray bytes = m_link.read();
        if (bytes.isEmpty()) return;
        trace(FrameRecord::RECEIVED, bytes);
        m_scan.received(bytes, now());
    }

    void trace(FrameRecord::Direction direction, const QByteArray& bytes)
    {
        if (m_trace) m_trace->add({now(), direction, bytes});
    }

    void print(const StationScan::Found& found) const
    {
        const bool isSerial = m_address.kind != LinkAddress::NETWORK;
        const double replyMs = double(found.replyTime) / MILLISECOND;
        if (m_isJson) {
            QJsonObject object;
            object[QLatin1String("station")] = found.station;
            object[QLatin1String("baud")] =
                isSerial ? QJsonValue(m_address.line.baud) : QJsonValue();
            object[QLatin1String("replyMs")] =
                found.replyTime < 0 ? QJsonValue() : QJsonValue(replyMs);
            printObject(stdout, object);
        } else {
            const QString speed = QString(QLatin1String(" at %1 baud")).arg(m_address.line.baud);
            const QString time =
                found.replyTime < 0 ? QString(QLatin1String("late"))
                                    : QString(QLatin1String("after %1 ms")).arg(replyMs, 0, 'f', 1);
            printLine(stdout,
                      QString(QLatin1String("station %1%2 answers %3"))
                          .arg(QString::number(found.station), isSerial ? speed : QString(), time));
        }
        std::fflush(stdout);
    }

    Link& m_link;
    const LinkAddress m_address;
    const bool m_isJson;
    StationScan m_scan;
    std::optional<FrameTrace> m_trace;
    WakeableWait m_wait;
    QElapsedTimer m_clock;
};

/// The addresses to scan: the link's own, or a serial link's at each speed.
std::vector<LinkAddress> addressesOf(const LinkAddress& address, const std::vector<int>& bauds)
{
    if (bauds.empty()) return {address};
    if (address.kind != LinkAddress::SERIAL)
        throw VerbFailure(EXIT_USAGE, QLatin1String("--bauds needs a serial link"));
    std::vector<LinkAddress> addresses;
    for (const int baud : bauds) {
        addresses.push_back(address);
        addresses.back().line.baud = baud;
    }
    return addresses;
}

} // namespace

ExitStatus scanStations(const DriverLibrary& driver, const LinkOptions& options,
                        const ScanOptions& scan)
{
    const LinkAddress given = addressOf(driver, options);
    const std::vector<LinkAddress> addresses = addressesOf(given, scan.bauds);
    stopOnSignals();
    WakeableWait::makePunctual();
    std::optional<SimulatedPlc> simulator;
    if (given.kind == LinkAddress::SIMULATED)
        simulator.emplace(simulatorProgram(options), simulatorArguments(options, given.line, {}));
    qint64 longest = 0;
    for (const LinkAddress& address : addresses)
        longest +=
            StationScan::longestTime(timingOf(address), LinkScan::settings(options, scan.stations));
    ScanProgress progress(int(scan.stations.size()), longest);
    int found = 0;
    for (const LinkAddress& address : addresses) {
        if (isToEnd()) break;
        Cancellation cancellation;
        const std::unique_ptr<Link> link =
            simulator ? simulator->open(address.line) : openLink(address, cancellation);
        found += LinkScan(*link, address, options, scan.stations).run(progress);
    }
    if (stopRequested()) throw VerbFailure(EXIT_INTERRUPTED, QLatin1String("interrupted"));
    if (found == 0) throw VerbFailure(EXIT_TIME_OUT, QLatin1String("no station answers"));
    return EXIT_DONE;
}
