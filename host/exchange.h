#ifndef EXCHANGE_H
#define EXCHANGE_H

#include "driverLibrary.h"

#include <QSerialPort>

#include <stdexcept>

struct LinkError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Runs the driver's requests over a serial port, one at a time.
class Exchange
{
public:
    /// What became of one call of run().
    enum Outcome {
        IDLE,      ///< the driver had nothing to send
        CONFIRMED, ///< the PLC answered
        RETRYING,  ///< no usable answer; the same request is due again
        GIVEN_UP   ///< no usable answer for the last time
    };

    struct Figures
    {
        int exchanges = 0; ///< requests that were answered or given up
        int retries = 0;
        int giveUps = 0;
    };

    /// Opens the port; throws LinkError when that fails.
    /// @param timeoutMs  longest wait for a whole reply
    Exchange(const DriverLibrary& driver, const QString& port, int timeoutMs);

    /// Sends the driver's next request and hands the reply back. Throws LinkError when the port
    /// fails.
    Outcome run();

    /// The request that the last run() sent.
    const FRAME_PRO& frame() const
    {
        return m_frame;
    }

    /// The driver's text for the last request that was given up.
    const QString& errorText() const
    {
        return m_errorText;
    }

    const Figures& figures() const
    {
        return m_figures;
    }

private:
    void send();
    QByteArray collectReply();

    const DriverLibrary& m_driver;
    QSerialPort m_port;
    int m_timeoutMs;
    FRAME_PRO m_frame;
    QString m_errorText;
    Figures m_figures;
};

#endif
