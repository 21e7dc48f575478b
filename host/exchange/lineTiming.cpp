#include "exchange/lineTiming.h"

#include "exchange/timeUnits.h"

namespace {

enum {
    START_BITS = 1,
    MOST_CHARACTER_BITS = 11,
    FASTEST_COUNTED_BAUD = 19200,
    FIXED_SILENCE = 1750
};

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
    settings.parity = parityFromText(texts.value(2)).value_or(settings.parity);
    take(settings.stopBits, texts, 3);
    return settings;
}

std::optional<LineSettings::Parity> LineSettings::parityFromText(const QString& text)
{
    const QString upper = text.toUpper();
    if (upper == QLatin1String("NONE")) return NO_PARITY;
    if (upper == QLatin1String("EVEN")) return EVEN_PARITY;
    if (upper == QLatin1String("ODD")) return ODD_PARITY;
    return std::nullopt;
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

/// Characters of no bits take no time at any speed whose silent interval is counted in characters.
LineTiming LineTiming::network(int slowestUnseenBaud)
{
    LineTiming timing(FASTEST_COUNTED_BAUD, 0);
    timing.m_unseenBaud = slowestUnseenBaud;
    return timing;
}

qint64 LineTiming::frame(int bytes) const
{
    return roundedUp(qint64(bytes) * m_bitsPerCharacter * SECOND, m_baud);
}

qint64 LineTiming::unseenFrame(int bytes) const
{
    if (m_unseenBaud == 0) return 0;
    return roundedUp(qint64(bytes) * MOST_CHARACTER_BITS * SECOND, m_unseenBaud);
}

qint64 LineTiming::silentInterval() const
{
    if (m_baud > FASTEST_COUNTED_BAUD) return FIXED_SILENCE;
    return roundedUp(qint64(7) * m_bitsPerCharacter * SECOND, qint64(2) * m_baud);
}
