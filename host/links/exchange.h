#ifndef EXCHANGE_H
#define EXCHANGE_H

#include "driver/driverLibrary.h"
#include "exchange/exchangeMachine.h"

#include <QElapsedTimer>
#include <QSerialPort>

#include <stdexcept>

struct LinkError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Runs the driver's requests over a serial port, with the line settings of the driver's own
/// parameter string.
class Exchange : private DriverCalls
{
public:
    struct Figures
    {
        int exchanges = 0; ///< requests that were answered or given up
        int retries = 0;
        int giveUps = 0;
    };

    /// Opens the port; throws LinkError when that fails.
    Exchange(const DriverLibrary& driver, const QString& port, const ExchangeMachine::Times& times);

    /// Sends the driver's next request and hands the answer, or its absence, back. Empty when the
    /// driver had nothing to send. Throws LinkError when the port fails.
    std::optional<FINISHED_EXCHANGE> run();

    const Figures& figures() const
    {
        return m_figures;
    }

private:
    int getSendFrame(FRAME_PRO* frame) override;
    int dealRcvFrame(QByteArray& reply, QString& errorText) override;

    void write(const QByteArray& request);
    void waitForBytesUntil(qint64 time);
    qint64 now() const;
    void count(const FINISHED_EXCHANGE& finished);

    const DriverLibrary& m_driver;
    QSerialPort m_port;
    QElapsedTimer m_clock;
    ExchangeMachine m_machine;
    Figures m_figures;
};

#endif
