#include "exchange.h"

#include <QElapsedTimer>
#include <QThread>

namespace {

// Above 19200 baud the silence between two frames is fixed (MODBUS over Serial Line
// V1.02, 2.5.1.1).
const unsigned long SILENT_INTERVAL_MICROSECONDS = 1750;

LinkError portError(const QSerialPort& port)
{
    return LinkError((port.portName() + QLatin1String(": ") + port.errorString()).toStdString());
}

} // namespace

Exchange::Exchange(const DriverLibrary& driver, const QString& port, int timeoutMs)
    : m_driver(driver), m_port(port), m_timeoutMs(timeoutMs)
{
    m_port.setBaudRate(QSerialPort::Baud38400);
    if (!m_port.open(QIODevice::ReadWrite)) throw portError(m_port);
}

void Exchange::send()
{
    // What a late reply left behind must not be taken for the next one.
    m_port.clear(QSerialPort::Input);
    QThread::usleep(SILENT_INTERVAL_MICROSECONDS);
    m_port.write(reinterpret_cast<const char*>(m_frame.sendBuf), m_frame.sendLen);
    if (!m_port.waitForBytesWritten(m_timeoutMs)) throw portError(m_port);
}

QByteArray Exchange::collectReply()
{
    QByteArray reply;
    QElapsedTimer clock;
    clock.start();
    while (reply.size() < m_frame.recvLen) {
        const qint64 left = m_timeoutMs - clock.elapsed();
        if (left <= 0) break;
        if (m_port.waitForReadyRead(int(left)))
            reply += m_port.read(m_frame.recvLen - reply.size());
        else if (m_port.error() != QSerialPort::TimeoutError)
            throw portError(m_port);
    }
    return reply;
}

Exchange::Outcome Exchange::run()
{
    if (m_driver.getSendFrame(&m_frame) == 0) return IDLE;
    QByteArray reply;
    if (m_frame.sendLen > 0) {
        send();
        reply = collectReply();
    }
    switch (m_driver.dealRcvFrame(reply, m_errorText)) {
    case REPLY_RETRY:
        ++m_figures.retries;
        return RETRYING;
    case REPLY_GIVEN_UP:
        ++m_figures.exchanges;
        ++m_figures.giveUps;
        return GIVEN_UP;
    default:
        ++m_figures.exchanges;
        return CONFIRMED;
    }
}
