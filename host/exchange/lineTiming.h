#ifndef LINE_TIMING_H
#define LINE_TIMING_H

#include <QStringList>

/// A serial line's settings, as the driver's parameter string gives them.
struct LineSettings
{
    int baud = 38400;
    int dataBits = 8;
    bool parity = false;
    int stopBits = 1;

    /// From baud rate, data bits, parity ("NONE" or another) and stop bits. A text that is not a
    /// number leaves the default.
    static LineSettings fromTexts(const QStringList& texts);
};

/// How long things take on the line, in microseconds (MODBUS over Serial Line V1.02, 2.5.1.1).
class LineTiming
{
public:
    explicit LineTiming(const LineSettings& settings);

    /// `bytes` bytes on the wire.
    qint64 frame(int bytes) const;

    /// The silence before each frame: 3.5 characters, above 19200 baud fixed at 1750.
    qint64 silentInterval() const;

private:
    int m_baud;
    int m_bitsPerCharacter;
};

#endif
