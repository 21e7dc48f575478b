#include "exchange/lineTiming.h"

namespace {

enum { MICROSECONDS = 1000000, START_BITS = 1, FASTEST_COUNTED_BAUD = 19200, FIXED_SILENCE = 1750 };

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
    settings.parity = texts.size() > 2 && texts.at(2) != QLatin1String("NONE");
    take(settings.stopBits, texts, 3);
    return settings;
}

LineTiming::LineTiming(const LineSettings& settings)
    : m_baud(settings.baud),
      m_bitsPerCharacter(START_BITS + settings.dataBits + (settings.parity ? 1 : 0) +
                         settings.stopBits)
{
}

qint64 LineTiming::frame(int bytes) const
{
    return roundedUp(qint64(bytes) * m_bitsPerCharacter * MICROSECONDS, m_baud);
}

qint64 LineTiming::silentInterval() const
{
    if (m_baud > FASTEST_COUNTED_BAUD) return FIXED_SILENCE;
    return roundedUp(qint64(7) * m_bitsPerCharacter * MICROSECONDS, qint64(2) * m_baud);
}
