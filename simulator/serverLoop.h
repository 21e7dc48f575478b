#ifndef SERVER_LOOP_H
#define SERVER_LOOP_H

#include "controlCommands.h"
#include "controlSocket.h"
#include "lineEnd.h"
#include "plcProgram.h"
#include "requestHandler.h"

#include <csignal>
#include <deque>

/// Carries bytes between a line and the request handler, each at its time, in one thread.
class ServerLoop
{
public:
    /// @param program  runs before each request is executed
    ServerLoop(LineEnd& line, RequestHandler& handler, PlcStations& stations, PlcProgram& program,
               const LinePacing& pacing);

    /// Call it before run(). The line goes first: clients are served between two turns of the line.
    /// @param socket, commands  outlive this
    void setControl(ControlSocket& socket, ControlCommands& commands)
    {
        m_controlSocket = &socket;
        m_controlCommands = &commands;
    }

    /// Serves until a signal handler sets `stop`, until standard input ends if `untilStdinEnds`, or
    /// until a control client orders the end.
    /// @param waitingMask  signals that stay blocked while the loop waits. The signals that set
    /// `stop`
    ///                     must be blocked at all other times: none comes between test and wait.
    void run(const volatile std::sig_atomic_t& stop, const sigset_t& waitingMask,
             bool untilStdinEnds);

    std::int64_t badFrames() const
    {
        return m_cutter.badFrames();
    }
    const Durations& lateness() const
    {
        return m_lateness;
    }

private:
    enum { LINE, LISTENER, DEPARTURES, STANDARD_INPUT, CONTROL, WAITED_FOR };

    bool waitForEvent(const sigset_t& waitingMask, bool (&ready)[WAITED_FOR], bool withInput);
    std::int64_t nextDeadline() const;
    void acceptHost();
    void receive(std::int64_t at);
    void endSilentFrame(std::int64_t now);
    void handleRequests();
    void serveHeld(std::int64_t now);
    void runProgram(std::int64_t at);
    void queue(std::vector<OutgoingPiece> pieces);
    void sendDue();
    void serveControl();
    bool isToQuit() const
    {
        return m_controlCommands && m_controlCommands->isQuit();
    }

    LineEnd& m_line;
    RequestHandler& m_handler;
    PlcStations& m_stations;
    PlcProgram& m_program;
    LinePacing m_pacing;
    RequestCutter m_cutter;
    std::deque<OutgoingPiece> m_outgoing; // in order of time
    Durations m_lateness;
    ControlSocket* m_controlSocket = nullptr; // null: there is none
    ControlCommands* m_controlCommands = nullptr;
    std::int64_t m_startedAt;
    std::int64_t m_programAt;
};

#endif
