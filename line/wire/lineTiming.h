#ifndef LINE_TIMING_H
#define LINE_TIMING_H

#include <QStringList>

/// The settings of a serial line, in the order of the driver's parameter string.
struct LineSettings
{
    enum Parity { NO_PARITY, EVEN_PARITY, ODD_PARITY };

    int baud; ///< bits a second
    int dataBits;
    Parity parity;
    int stopBits;

    /// 38400 baud, 8 data bits, no parity, 1 stop bit: the controllers' default.
    LineSettings() : baud(38400), dataBits(8), parity(NO_PARITY), stopBits(1) {}

    /// @param texts  baud rate, data bits, parity and stop bits, in this order. A missing text or
    ///               a malformed text leaves the default of its setting.
    static LineSettings fromTexts(const QStringList& texts);

    /// Sets the parity from "NONE", "EVEN" or "ODD", in upper or lower case.
    /// @return false for any other text; the parity then keeps its value
    static bool takeParity(const QString& text, Parity& parity);
};

/// The duration of frames and silences on a line, in microseconds
/// (MODBUS over Serial Line V1.02, 2.5.1.1).
class LineTiming
{
public:
    explicit LineTiming(const LineSettings& settings);

    /// The timing of a network link: no serial line is involved, so every duration is 0.
    static LineTiming network();

    /// The time that a frame of `bytes` bytes takes on the wire.
    qint64 frame(int bytes) const;

    /// The silence before each frame: 3.5 characters; above 19200 baud always 1750 microseconds.
    qint64 silentInterval() const;

private:
    LineTiming(int baud, int bitsPerCharacter);

    int m_baud;
    int m_bitsPerCharacter;
};

#endif
