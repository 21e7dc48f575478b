#ifndef SIMULATED_PLC_H
#define SIMULATED_PLC_H

#include <QProcess>
#include <QString>

/// The simulated PLC as a process beside the host. The constructor throws LinkError when it does
/// not start; the destructor ends it, and so does the end of this process, however it comes.
class SimulatedPlc
{
public:
    SimulatedPlc(const QString& program, const QStringList& arguments);
    ~SimulatedPlc();

    /// The pseudo-terminal that it serves.
    const QString& port() const
    {
        return m_port;
    }

private:
    QProcess m_process;
    QString m_port;
};

#endif
