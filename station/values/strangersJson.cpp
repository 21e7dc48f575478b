#include "values/strangersJson.h"

#include "values/jsonKeys.h"
#include "values/jsonNumbers.h"

#include <QJsonDocument>

namespace {

StrangersJson refused(const QString& problem)
{
    StrangersJson read;
    read.problem = problem;
    return read;
}

} // namespace

StrangersJson strangersObject(const QByteArray& text)
{
    if (QString::fromUtf8(text).toUtf8() != text) // what is no UTF-8 comes back changed
        return refused(QLatin1String("is not JSON: it is not plain UTF-8"));
    const QString keyProblem = jsonKeyProblem(text);
    if (!keyProblem.isEmpty()) return refused(QLatin1String("cannot be taken: ") + keyProblem);
    const JsonNumbers numbers = jsonNumbersOf(text);
    if (!numbers.problem.isEmpty())
        return refused(QLatin1String("is not JSON: ") + numbers.problem);
    QJsonParseError error = {};
    const QJsonDocument document = QJsonDocument::fromJson(numbers.json, &error);
    if (error.error != QJsonParseError::NoError)
        return refused(QString(QLatin1String("is not JSON: %1 at byte %2"))
                           .arg(error.errorString())
                           .arg(error.offset));
    if (!document.isObject()) return refused(QLatin1String("is no JSON object"));
    StrangersJson read;
    read.object = document.object();
    return read;
}
