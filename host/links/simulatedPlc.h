#ifndef SIMULATED_PLC_H
#define SIMULATED_PLC_H

#include <QProcess>
#include <QString>

/// The simulated PLC as a process beside the host. The constructor throws LinkError when it does
/// not start; the destructor ends it.
class SimulatedPlc
{
public:
    explicit SimulatedPlc(const QString& program);
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
