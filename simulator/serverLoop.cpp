#include "serverLoop.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <limits>

namespace {

const std::int64_t SECOND_NS = 1000000000;
const std::int64_t MILLISECOND_NS = 1000000;
const std::int64_t NEVER = std::numeric_limits<std::int64_t>::max();

// The system takes tens of microseconds to wake a process: the loop spins for the last 80.
const std::int64_t AWAKE_AHEAD_NS = 80000;

std::int64_t monotonicNow()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t(now.tv_sec) * SECOND_NS + now.tv_nsec;
}

timespec timeUntil(std::int64_t deadline)
{
    const std::int64_t left = std::max<std::int64_t>(0, deadline - monotonicNow());
    timespec time = {};
    time.tv_sec = static_cast<time_t>(left / SECOND_NS);
    time.tv_nsec = static_cast<long>(left % SECOND_NS);
    return time;
}

bool standardInputEnded()
{
    char ignored[256];
    return read(STDIN_FILENO, ignored, sizeof ignored) <= 0;
}

} // namespace

ServerLoop::ServerLoop(LineEnd& line, RequestHandler& handler, PlcStations& stations,
                       PlcProgram& program, const LinePacing& pacing)
    : m_line(line),
      m_handler(handler),
      m_stations(stations),
      m_program(program),
      m_pacing(pacing),
      m_startedAt(monotonicNow()),
      m_programAt(m_startedAt)
{
}

void ServerLoop::run(const volatile std::sig_atomic_t& stop, const sigset_t& waitingMask,
                     bool untilStdinEnds)
{
    while (!stop && !isToQuit()) {
        bool ready[WAITED_FOR] = {};
        if (!waitForEvent(waitingMask, ready, untilStdinEnds)) continue;
        const std::int64_t now = monotonicNow();
        if (ready[STANDARD_INPUT] && standardInputEnded()) return;
        if (ready[DEPARTURES]) m_line.hostLeft();
        serveHeld(now);
        if (ready[LISTENER]) {
            acceptHost();
        } else if (ready[LINE]) {
            receive(now);
        } else {
            endSilentFrame(now);
        }
        sendDue();
        if (ready[CONTROL]) serveControl();
    }
}

/// False when a signal interrupted the wait.
bool ServerLoop::waitForEvent(const sigset_t& waitingMask, bool (&ready)[WAITED_FOR],
                              bool withInput)
{
    pollfd wanted[WAITED_FOR] = {};
    wanted[LINE] = {m_line.descriptor(), POLLIN, 0};
    wanted[LISTENER] = {m_line.listener(), POLLIN, 0};
    wanted[DEPARTURES] = {m_line.departures(), POLLIN, 0};
    wanted[STANDARD_INPUT] = {withInput ? STDIN_FILENO : -1, POLLIN, 0};
    wanted[CONTROL] = {m_controlSocket ? m_controlSocket->descriptor() : -1, POLLIN, 0};
    const std::int64_t deadline = nextDeadline();
    const timespec left = timeUntil(deadline);
    if (ppoll(wanted, WAITED_FOR, deadline == NEVER ? nullptr : &left, &waitingMask) < 0)
        return false;
    for (int i = 0; i < WAITED_FOR; ++i)
        ready[i] = wanted[i].revents != 0;
    return true;
}

std::int64_t ServerLoop::nextDeadline() const
{
    std::int64_t deadline = NEVER;
    if (!m_outgoing.empty()) deadline = m_outgoing.front().dueAt - AWAKE_AHEAD_NS;
    if (m_cutter.holdsBytes())
        deadline = std::min(deadline, m_cutter.lastByteAt() + m_pacing.endOfFrameSilence());
    if (const std::optional<std::int64_t> service = m_handler.nextServiceAt())
        deadline = std::min(deadline, *service);
    return deadline;
}

void ServerLoop::acceptHost()
{
    m_line.acceptHost();
    m_outgoing.clear();
    m_cutter.reset();
    m_handler.lineReset();
}

void ServerLoop::receive(std::int64_t at)
{
    m_cutter.add(m_line.receive(), at);
    handleRequests();
}

/// Call it only when nothing is readable: bytes that wait to be read end a silence.
void ServerLoop::endSilentFrame(std::int64_t now)
{
    if (!m_cutter.holdsBytes()) return;
    if (now < m_cutter.lastByteAt() + m_pacing.endOfFrameSilence()) return;
    m_cutter.lineFellSilent();
    handleRequests();
}

void ServerLoop::handleRequests()
{
    while (const std::optional<Request> request = m_cutter.take()) {
        runProgram(request->lastByteAt);
        queue(m_handler.handle(*request));
    }
}

void ServerLoop::serveHeld(std::int64_t now)
{
    const std::optional<std::int64_t> service = m_handler.nextServiceAt();
    if (!service || *service > now) return;
    runProgram(now);
    queue(m_handler.serveHeld(now));
}

/// A request that ended with a silence may be older than the requests served since. The program
/// never goes back in time.
void ServerLoop::runProgram(std::int64_t at)
{
    m_programAt = std::max(m_programAt, at);
    m_program.runUntil((m_programAt - m_startedAt) / MILLISECOND_NS, m_stations);
}

/// Sorts by time: a prompt reply overtakes a late reply that was scheduled before it.
void ServerLoop::queue(std::vector<OutgoingPiece> pieces)
{
    const auto isSooner = [](const OutgoingPiece& first, const OutgoingPiece& second) {
        return first.dueAt < second.dueAt;
    };
    for (OutgoingPiece& piece : pieces) {
        const auto place = std::upper_bound(m_outgoing.begin(), m_outgoing.end(), piece, isSooner);
        m_outgoing.insert(place, std::move(piece));
    }
}

/// Sends one piece a turn, so that bytes of the host in between get their true time.
void ServerLoop::sendDue()
{
    if (m_outgoing.empty()) return;
    const OutgoingPiece piece = m_outgoing.front();
    std::int64_t now = monotonicNow();
    if (piece.dueAt - now > AWAKE_AHEAD_NS) return;
    while (now < piece.dueAt)
        now = monotonicNow();
    m_outgoing.pop_front();
    m_line.send(piece.bytes);
    if (!piece.endsFrame) return;
    m_lateness.add(now - piece.dueAt);
    m_handler.replyEnded(now + m_pacing.timeAfterWrite(piece.bytes.size()));
}

void ServerLoop::serveControl()
{
    const std::int64_t now = monotonicNow();
    runProgram(now);
    m_controlSocket->serve(
        [this, now](const std::string& line) { return m_controlCommands->answer(line, now); });
}
