#include "links/exchange.h"

#include <QThread>

#include <algorithm>

namespace {

const int WRITE_TIMEOUT_MS = 5000;

LinkError portError(const QSerialPort& port)
{
    return LinkError((port.portName() + QLatin1String(": ") + port.errorString()).toStdString());
}

LineSettings lineSettings(const DriverLibrary& driver)
{
    QString parameter;
    driver.getDriverParameter(&parameter);
    return LineSettings::fromTexts(parameter.split(QLatin1Char(',')).mid(1, 4));
}

} // namespace

Exchange::Exchange(const DriverLibrary& driver, const QString& port,
                   const ExchangeMachine::Times& times)
    : m_driver(driver), m_port(port), m_machine(*this, LineTiming(lineSettings(driver)), times)
{
    m_port.setBaudRate(lineSettings(driver).baud);
    if (!m_port.open(QIODevice::ReadWrite)) throw portError(m_port);
    m_clock.start();
}

int Exchange::getSendFrame(FRAME_PRO* frame)
{
    return m_driver.getSendFrame(frame);
}

int Exchange::dealRcvFrame(QByteArray& reply, QString& errorText)
{
    return m_driver.dealRcvFrame(reply, errorText);
}

qint64 Exchange::now() const
{
    return m_clock.nsecsElapsed() / 1000;
}

void Exchange::write(const QByteArray& request)
{
    m_port.write(request);
    if (!m_port.waitForBytesWritten(WRITE_TIMEOUT_MS)) throw portError(m_port);
}

/// The port waits in whole milliseconds, silent intervals are shorter.
void Exchange::waitForBytesUntil(qint64 time)
{
    const qint64 left = std::max<qint64>(time - now(), 0);
    if (left < 1000) {
        QThread::usleep(static_cast<unsigned long>(left));
    } else if (!m_port.waitForReadyRead(int(left / 1000)) &&
               m_port.error() != QSerialPort::TimeoutError) {
        throw portError(m_port);
    }
    const QByteArray bytes = m_port.readAll();
    if (!bytes.isEmpty()) m_machine.received(bytes, now());
}

void Exchange::count(const FINISHED_EXCHANGE& finished)
{
    if (finished.result == REPLY_RETRY) {
        ++m_figures.retries;
        return;
    }
    ++m_figures.exchanges;
    if (finished.result == REPLY_GIVEN_UP) ++m_figures.giveUps;
}

std::optional<FINISHED_EXCHANGE> Exchange::run()
{
    for (;;) {
        const ExchangeMachine::Step step = m_machine.advance(now());
        if (!step.send.isEmpty()) write(step.send);
        if (step.idle) return std::nullopt;
        if (step.wakeAt > now()) waitForBytesUntil(step.wakeAt);
        if (const std::optional<FINISHED_EXCHANGE> finished = m_machine.takeFinished()) {
            count(*finished);
            return finished;
        }
    }
}
