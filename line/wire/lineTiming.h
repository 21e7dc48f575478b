#ifndef LINE_TIMING_H
#define LINE_TIMING_H

#include <QStringList>

/// A serial line's settings, as the driver's parameter string gives them.
struct LineSettings
{
    enum Parity { NO_PARITY, EVEN_PARITY, ODD_PARITY };

    int baud;
    int dataBits;
    Parity parity;
    int stopBits;

    /// 38400 baud, 8 data bits, no parity, 1 stop bit: the controllers' own.
    LineSettings() : baud(38400), dataBits(8), parity(NO_PARITY), stopBits(1) {}

    /// From baud rate, data bits, parity and stop bits. A text that is none leaves the default.
    static LineSettings fromTexts(const QStringList& texts);

    /// From "NONE", "EVEN" or "ODD" in either case.
    /// @return false for any other text, which leaves the parity as it is
    static bool takeParity(const QString& text, Parity& parity);
};

/// How long things take on the line, in microseconds (MODBUS over Serial Line V1.02, 2.5.1.1).
class LineTiming
{
public:
    explicit LineTiming(const LineSettings& settings);

    /// Of a link that has no line: everything takes 0.
    static LineTiming network();

    /// `bytes` bytes on the wire.
    qint64 frame(int bytes) const;

    /// The silence before each frame: 3.5 characters, above 19200 baud fixed at 1750.
    qint64 silentInterval() const;

private:
    LineTiming(int baud, int bitsPerCharacter);

    int m_baud;
    int m_bitsPerCharacter;
};

#endif
