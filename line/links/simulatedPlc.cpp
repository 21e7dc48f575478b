#include "links/simulatedPlc.h"

#include "links/serialLink.h"

#include <sys/wait.h>

#include <utility>

namespace {

const int START_TIMEOUT_MS = 10000;

} // namespace

const char* const SIMULATED_PLC_HAS_ENDED = "the simulated PLC has ended";

SimulatedPlc::SimulatedPlc(const QString& program, const QStringList& arguments)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(program, QStringList(arguments) << QLatin1String("--until-stdin-ends"));
    while (m_process.waitForReadyRead(START_TIMEOUT_MS)) {
        if (m_process.canReadLine()) break;
    }
    m_port = QString::fromLocal8Bit(m_process.readLine()).trimmed();
    m_processId = m_process.processId();
    if (!m_port.isEmpty()) return;
    const QString reason = m_process.state() == QProcess::NotRunning
                               ? QLatin1String("it does not start, or ended at once")
                               : m_process.errorString();
    throw LinkError((program + QLatin1String(": ") + reason).toStdString());
}

SimulatedPlc::~SimulatedPlc()
{
    m_process.closeWriteChannel();
    m_process.waitForFinished();
}

/// Not by QProcess, which belongs to the thread that made it.
bool SimulatedPlc::isRunning() const
{
    siginfo_t ended = {};
    return waitid(P_PID, id_t(m_processId), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           ended.si_pid == 0;
}

std::unique_ptr<Link> SimulatedPlc::open(const LineSettings& line)
{
    if (std::exchange(m_wasOpened, true)) throw LinkError(SIMULATED_PLC_HAS_ENDED);
    std::unique_ptr<Link> link(new SerialLink(m_port, line));
    if (!isRunning()) throw LinkError(SIMULATED_PLC_HAS_ENDED);
    return link;
}
