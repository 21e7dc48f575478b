#include "program/printing.h"

#include <QJsonDocument>

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

QString text(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

void printLine(std::FILE* out, const QString& line)
{
    std::fprintf(out, "%s\n", line.toUtf8().constData());
}

void printFailure(const std::exception& error)
{
    for (const QString& line : QString::fromUtf8(error.what()).split(QLatin1Char('\n')))
        printLine(stderr, QLatin1String("kakb-host: ") + line);
}

void printObject(std::FILE* out, const QJsonObject& object)
{
    printLine(out, QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)));
}
