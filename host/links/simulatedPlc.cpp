#include "links/simulatedPlc.h"

#include "links/exchange.h"

namespace {

const int START_TIMEOUT_MS = 10000;

} // namespace

SimulatedPlc::SimulatedPlc(const QString& program)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(program, QStringList());
    while (m_process.waitForReadyRead(START_TIMEOUT_MS)) {
        if (m_process.canReadLine()) break;
    }
    m_port = QString::fromLocal8Bit(m_process.readLine()).trimmed();
    if (m_port.isEmpty())
        throw LinkError((program + QLatin1String(": ") + m_process.errorString()).toStdString());
}

SimulatedPlc::~SimulatedPlc()
{
    m_process.terminate();
    m_process.waitForFinished();
}
