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

StrangersJson strangersObject(const QByteArray& body)
{
    const QString keyProblem = jsonKeyProblem(body);
    if (!keyProblem.isEmpty())
        return refused(QLatin1String("the body cannot be taken: ") + keyProblem);
    const JsonNumbers numbers = jsonNumbersOf(body);
    if (!numbers.problem.isEmpty())
        return refused(QLatin1String("the body is not JSON: ") + numbers.problem);
    QJsonParseError error = {};
    const QJsonDocument document = QJsonDocument::fromJson(numbers.json, &error);
    if (error.error != QJsonParseError::NoError)
        return refused(QString(QLatin1String("the body is not JSON: %1 at byte %2"))
                           .arg(error.errorString())
                           .arg(error.offset));
    if (!document.isObject()) return refused(QLatin1String("the body is no JSON object"));
    StrangersJson read;
    read.object = document.object();
    return read;
}
