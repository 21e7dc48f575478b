#include "links/simulatedPlc.h"

#include "links/serialLink.h"

#include <sys/wait.h>

#include <utility>

const char* const SIMULATED_PLC_HAS_ENDED = "the simulated PLC has ended";

namespace {

const int START_TIMEOUT_MS = 10000;

/// The pseudo-terminal of the simulated PLC. It is lost only with the process: to name the
/// terminal would tell the user nothing.
class SimulatedLine : public SerialLink
{
public:
    using SerialLink::SerialLink;

    void write(const QByteArray& bytes) override
    {
        try {
            SerialLink::write(bytes);
        } catch (const LinkError&) {
            throw LinkError(SIMULATED_PLC_HAS_ENDED);
        }
    }

    QByteArray read() override
    {
        try {
            return SerialLink::read();
        } catch (const LinkError&) {
            throw LinkError(SIMULATED_PLC_HAS_ENDED);
        }
    }
};

} // namespace

SimulatedPlc::SimulatedPlc(const QString& program, const QStringList& arguments)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(program, QStringList(arguments) << QLatin1String("--until-stdin-ends"));
    while (m_process.waitForReadyRead(START_TIMEOUT_MS)) {
        if (m_process.canReadLine()) break;
    }
    m_port = QString::fromLocal8Bit(m_process.readLine()).trimmed();
    m_processId = m_process.processId();
    m_process.moveToThread(nullptr);
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

/// Does not ask QProcess: without an event loop it does not hear of the end.
bool SimulatedPlc::isRunning() const
{
    siginfo_t ended = {};
    return waitid(P_PID, id_t(m_processId), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           ended.si_pid == 0;
}

std::unique_ptr<Link> SimulatedPlc::open(const LineSettings& line)
{
    if (std::exchange(m_wasOpened, true)) throw LinkError(SIMULATED_PLC_HAS_ENDED);
    auto link = std::make_unique<SimulatedLine>(m_port, line);
    if (!isRunning()) throw LinkError(SIMULATED_PLC_HAS_ENDED);
    return link;
}
