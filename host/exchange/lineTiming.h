#ifndef LINE_TIMING_H
#define LINE_TIMING_H

#include <QStringList>

#include <optional>

/// A serial line's settings, as the driver's parameter string gives them.
struct LineSettings
{
    enum Parity { NO_PARITY, EVEN_PARITY, ODD_PARITY };

    int baud = 38400;
    int dataBits = 8;
    Parity parity = NO_PARITY;
    int stopBits = 1;

    /// From baud rate, data bits, parity and stop bits. A text that is none leaves the default.
    static LineSettings fromTexts(const QStringList& texts);

    /// From "NONE", "EVEN" or "ODD" in either case; empty for any other text.
    static std::optional<Parity> parityFromText(const QString& text);
};

/// How long things take on the line, in microseconds (MODBUS over Serial Line V1.02, 2.5.1.1).
class LineTiming
{
public:
    explicit LineTiming(const LineSettings& settings);

    enum { SLOWEST_UNSEEN_BAUD = 1200 };

    /// Of a link that has none: everything takes 0. Its peer may have a line of its own, which is
    /// not seen from here.
    static LineTiming network(int slowestUnseenBaud = SLOWEST_UNSEEN_BAUD);

    /// `bytes` bytes on the wire.
    qint64 frame(int bytes) const;

    /// What `bytes` bytes take on a line that is not seen from here, if there is one.
    qint64 unseenFrame(int bytes) const;

    /// The silence before each frame: 3.5 characters, above 19200 baud fixed at 1750.
    qint64 silentInterval() const;

private:
    LineTiming(int baud, int bitsPerCharacter);

    int m_baud;
    int m_bitsPerCharacter;
    int m_unseenBaud = 0; ///< 0: all of the line is seen
};

#endif
