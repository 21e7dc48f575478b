#ifndef CONTROL_COMMANDS_H
#define CONTROL_COMMANDS_H

#include "requestHandler.h"

#include <string>

/// Executes the lines of a control client. Each line has one answer, "ok", "ok VALUE" or
/// "error SENTENCE".
///
///   set ADDRESS=VALUE
///   get ADDRESS
///   refuse [STATION:]FIRST[..LAST][:CODE][:write]
///   refuse none
///   stall SECONDS
///   silent STATION on|off
///   quit
class ControlCommands
{
public:
    ControlCommands(PlcStations& stations, RequestHandler& handler)
        : m_stations(stations), m_handler(handler)
    {
    }

    /// @param line  without its end
    /// @param now   nanoseconds, of the clock of the requests
    /// @return the answer without its end
    std::string answer(const std::string& line, std::int64_t now);

    /// True after "quit".
    bool isQuit() const
    {
        return m_isQuit;
    }

private:
    std::string set(const std::string& argument);
    std::string get(const std::string& argument);
    std::string refuse(const std::string& argument);
    std::string stall(const std::string& argument, std::int64_t now);
    std::string silence(const std::string& station, const std::string& state);

    PlcStations& m_stations;
    RequestHandler& m_handler;
    bool m_isQuit = false;
};

#endif
