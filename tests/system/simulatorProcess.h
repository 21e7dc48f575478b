#ifndef SIMULATOR_PROCESS_H
#define SIMULATOR_PROCESS_H

#include "childProcess.h"
#include "plan/tag.h"
#include "session/linkThread.h"

#include <QTemporaryDir>

#include <map>
#include <tuple>

/// The simulated PLC as a process of its own; what it held and counted is known after its end.
class SimulatorProcess
{
public:
    /// Throws std::runtime_error when it does not start.
    explicit SimulatorProcess(std::vector<std::string> arguments);

    /// What a host opens: a path, or "tcp:ADDRESS,PORT".
    const std::string& address() const
    {
        return m_address;
    }

    /// Opens address() as the host does.
    LinkThread::OpenLink opener() const;

    /// Gone without a word, as when the adapter is pulled out.
    void kill();

    /// Ends it; afterwards its memory and its report can be asked for.
    void end();

    /// The bytes that a host must show for the tag, from the memory at the end.
    QByteArray bytesOf(const Tag& tag) const;

    /// A count of the report; -1: there is none of that name.
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
