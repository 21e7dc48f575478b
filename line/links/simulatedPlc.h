#ifndef SIMULATED_PLC_H
#define SIMULATED_PLC_H

#include "links/link.h"
#include "wire/lineTiming.h"

#include <QProcess>
#include <QString>

/// What a lost link to it means.
extern const char* const SIMULATED_PLC_HAS_ENDED;

/// The simulated PLC as a process beside the host. The constructor throws LinkError when it does
/// not start; the destructor ends it, and so does the end of this process, however it comes.
class SimulatedPlc
{
public:
    SimulatedPlc(const QString& program, const QStringList& arguments);
    ~SimulatedPlc();

    /// Its pseudo-terminal, once: when it is gone, the terminal's number may be any program's.
    /// From one thread, which may be another than that of the constructor. Throws LinkError.
    std::unique_ptr<Link> open(const LineSettings& line);

private:
    bool isRunning() const;

    QProcess m_process;
    QString m_port;
    qint64 m_processId = 0;
    bool m_wasOpened = false;
};

#endif
