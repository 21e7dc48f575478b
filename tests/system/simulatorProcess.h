#ifndef SIMULATOR_PROCESS_H
#define SIMULATOR_PROCESS_H

#include "childProcess.h"
#include "plan/tag.h"
#include "session/linkThread.h"

#include <QTemporaryDir>

#include <map>
#include <tuple>

/// The simulated PLC as a child process. Its memory and its report are known after its end.
class SimulatorProcess
{
public:
    /// @throws std::runtime_error when the process does not start
    explicit SimulatorProcess(std::vector<std::string> arguments);

    /// The address for a host: a path, or "tcp:ADDRESS,PORT".
    const std::string& address() const
    {
        return m_address;
    }

    /// Opens address() in the same way as the host.
    LinkThread::OpenLink opener() const;

    /// Kills the process, which has the effect of an unplugged adapter.
    void kill();

    /// Ends the process and reads its memory and its report.
    void end();

    /// The bytes of the tag in the PLC's memory at its end.
    QByteArray bytesOf(const Tag& tag) const;

    /// A count from the report; -1: the report has no such count.
    long long reported(const std::string& key) const;

private:
    using Place = std::tuple<int, std::string, int>; // station, area, number on the wire

    int word(int station, const std::string& area, int number) const;

    QTemporaryDir m_folder;
    ChildProcess m_process;
    std::string m_address;
    std::map<Place, int> m_memory;
    std::map<std::string, long long> m_report;
};

#endif
