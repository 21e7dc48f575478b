#include "links/simulatedPlc.h"

#include "links/link.h"

namespace {

const int START_TIMEOUT_MS = 10000;

} // namespace

SimulatedPlc::SimulatedPlc(const QString& program, const QStringList& arguments)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(program, QStringList(arguments) << QLatin1String("--until-stdin-ends"));
    while (m_process.waitForReadyRead(START_TIMEOUT_MS)) {
        if (m_process.canReadLine()) break;
    }
    m_port = QString::fromLocal8Bit(m_process.readLine()).trimmed();
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
