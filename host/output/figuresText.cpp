#include "output/figuresText.h"

#include "wire/timeUnits.h"

#include <QStringList>

namespace {

QString timeText(qint64 microseconds)
{
    if (microseconds < 0) return QString::fromLatin1("-");
    if (microseconds >= SECOND) {
        return QString::number(double(microseconds) / SECOND, 'f', 1) + QLatin1String(" s");
    }
    const int decimals = microseconds < MILLISECOND ? 2 : 1;
    return QString::number(double(microseconds) / MILLISECOND, 'f', decimals) +
           QLatin1String(" ms");
}

QString counted(const char* what, qint64 count)
{
    return QLatin1String(what) + QLatin1Char(' ') + QString::number(count);
}

QJsonValue jsonTime(qint64 microseconds)
{
    return microseconds >= 0 ? QJsonValue(microseconds) : QJsonValue();
}

QString textOf(const LinkFigures& figures, const LinkRates& rates)
{
    QStringList parts;
    if (!figures.connected) parts << QString::fromLatin1("link lost");
    parts << QString::number(rates.exchangesPerSecond, 'f', 1) + QLatin1String(" exchanges/s");
    parts << counted("retries", figures.retries);
    parts << counted("give-ups", figures.giveUps);
    parts << counted("refused", figures.refusals);
    parts << counted("fences", figures.fences);
    parts << QLatin1String("reply p50 ") + timeText(rates.replyMedian);
    parts << QLatin1String("p99 ") + timeText(rates.reply99);
    if (rates.wireShare >= 0)
        parts << QLatin1String("wire ") + QString::number(rates.wireShare * 100, 'f', 0) +
                     QLatin1String(" %");
    parts << counted("losses", figures.losses);
    return parts.join(QLatin1String("  "));
}

} // namespace

QString figuresText(const LinkFigures& figures)
{
    return textOf(figures, figures.wholeRun);
}

QString liveFiguresText(const LinkFigures& figures)
{
    return textOf(figures, figures.lately);
}

QJsonObject figuresJson(const LinkFigures& figures)
{
    const LinkRates& rates = figures.wholeRun;
    QJsonObject json;
    json.insert(QLatin1String("connected"), figures.connected);
    json.insert(QLatin1String("exchangesPerSecond"), rates.exchangesPerSecond);
    json.insert(QLatin1String("exchanges"), figures.exchanges);
    json.insert(QLatin1String("retries"), figures.retries);
    json.insert(QLatin1String("giveUps"), figures.giveUps);
    json.insert(QLatin1String("refusals"), figures.refusals);
    json.insert(QLatin1String("fences"), figures.fences);
    json.insert(QLatin1String("losses"), figures.losses);
    json.insert(QLatin1String("replyMedianUs"), jsonTime(rates.replyMedian));
    json.insert(QLatin1String("reply99Us"), jsonTime(rates.reply99));
    json.insert(QLatin1String("wireShare"),
                rates.wireShare >= 0 ? QJsonValue(rates.wireShare) : QJsonValue());
    return json;
}
