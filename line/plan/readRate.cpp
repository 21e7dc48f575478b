#include "plan/readRate.h"

#include "plan/durationText.h"

bool takeRate(const QString& text, ReadRate& rate)
{
    rate = ReadRate();
    if (text.isEmpty() || text == QLatin1String("fast")) return true;
    if (text == QLatin1String("once")) {
        rate.kind = ReadRate::ONCE;
        return true;
    }
    const std::optional<qint64> interval = durationMs(text);
    if (!interval || *interval == 0) return false;
    rate.kind = ReadRate::INTERVAL;
    rate.intervalMs = *interval;
    return true;
}

QString rateProblem(const QString& text)
{
    return QString(QLatin1String("rate \"%1\" is unknown; there are fast, once and durations such "
                                 "as 500ms, 10s and 5m"))
        .arg(text);
}

QString rateText(const ReadRate& rate)
{
    switch (rate.kind) {
    case ReadRate::INTERVAL:
        return durationText(rate.intervalMs);
    case ReadRate::ONCE:
        return QLatin1String("once");
    default:
        return QLatin1String("fast");
    }
}
