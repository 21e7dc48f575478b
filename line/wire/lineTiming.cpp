#include "wire/lineTiming.h"

#include "wire/timeUnits.h"

namespace {

enum { START_BITS = 1, FASTEST_COUNTED_BAUD = 19200, FIXED_SILENCE = 1750 };

void take(int& setting, const QStringList& texts, int index)
{
    bool ok = false;
    const int value = texts.value(index).toInt(&ok);
    if (ok && value > 0) setting = value;
}

qint64 roundedUp(qint64 dividend, qint64 divisor)
{
    return (dividend + divisor - 1) / divisor;
}

} // namespace

LineSettings LineSettings::fromTexts(const QStringList& texts)
{
    LineSettings settings;
    take(settings.baud, texts, 0);
    take(settings.dataBits, texts, 1);
    takeParity(texts.value(2), settings.parity);
    take(settings.stopBits, texts, 3);
    return settings;
}

bool LineSettings::takeParity(const QString& text, Parity& parity)
{
    const QString upper = text.toUpper();
    if (upper == QLatin1String("NONE"))
        parity = NO_PARITY;
    else if (upper == QLatin1String("EVEN"))
        parity = EVEN_PARITY;
    else if (upper == QLatin1String("ODD"))
        parity = ODD_PARITY;
    else
        return false;
    return true;
}

LineTiming::LineTiming(const LineSettings& settings)
    : LineTiming(settings.baud, START_BITS + settings.dataBits +
                                    (settings.parity == LineSettings::NO_PARITY ? 0 : 1) +
                                    settings.stopBits)
{
}

LineTiming::LineTiming(int baud, int bitsPerCharacter)
    : m_baud(baud), m_bitsPerCharacter(bitsPerCharacter)
{
}

/// A character without bits takes no time. The baud rate must be one whose silent interval is
/// counted in characters: above it the interval is fixed and would not be 0.
LineTiming LineTiming::network()
{
    return LineTiming(FASTEST_COUNTED_BAUD, 0);
}

qint64 LineTiming::frame(int bytes) const
{
    return roundedUp(qint64(bytes) * m_bitsPerCharacter * SECOND, m_baud);
}

qint64 LineTiming::silentInterval() const
{
    if (m_baud > FASTEST_COUNTED_BAUD) return FIXED_SILENCE;
    return roundedUp(qint64(7) * m_bitsPerCharacter * SECOND, qint64(2) * m_baud);
}
