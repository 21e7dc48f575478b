#ifndef SIMULATED_PLC_H
#define SIMULATED_PLC_H

#include "links/link.h"
#include "wire/lineTiming.h"

#include <QProcess>
#include <QString>

/// The message of a lost link to the simulated PLC.
extern const char* const SIMULATED_PLC_HAS_ENDED;

/// Runs the simulated PLC as a child process. The constructor throws LinkError when the program
/// does not start. The destructor ends the process. The process also ends with this process, even
/// after a crash, because its standard input then ends.
///
/// No event loop serves the process, so any thread constructs and destroys the object, and any
/// thread calls open(), one at a time.
class SimulatedPlc
{
public:
    SimulatedPlc(const QString& program, const QStringList& arguments);
    ~SimulatedPlc();

    /// Opens the pseudo-terminal of the process. Only the first call succeeds: after a loss another
    /// program may have the terminal's number.
    /// @throws LinkError
    std::unique_ptr<Link> open(const LineSettings& line);

private:
    bool isRunning() const;

    QProcess m_process;       ///< of no thread; used by constructor and destructor only
    QString m_port;           ///< constant after construction
    qint64 m_processId = 0;   ///< constant after construction
    bool m_wasOpened = false; ///< used by open() only
};

#endif
