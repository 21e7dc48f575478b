#include "program/settingTexts.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

enum { LONGEST_HOST_NAME = 253 };

const qint64 MOST_BYTES = qint64(1024) * 1024 * 1024 * 1024;

struct SizeUnit
{
    const char* name;
    qint64 bytes;
};

const SizeUnit SIZE_UNITS[] = {{"KiB", 1024}, {"MiB", 1024 * 1024}, {"GiB", 1024 * 1024 * 1024}};

} // namespace

QString nameProblem(const QString& name)
{
    if (name.isEmpty()) return QLatin1String("the name is empty");
    const bool hasControl = std::any_of(name.begin(), name.end(), [](QChar character) {
        return character.category() == QChar::Other_Control;
    });
    return hasControl ? QString(QLatin1String("the name has a control character")) : QString();
}

QString linkNameProblem(const QString& name)
{
    return name.contains(QLatin1Char('/'))
               ? QString(QLatin1String("the name \"%1\" has a slash")).arg(name)
               : nameProblem(name);
}

QString hostNameProblem(const QString& name)
{
    static const QRegularExpression format(
        QLatin1String("\\A[A-Za-z0-9](?:[A-Za-z0-9.-]*[A-Za-z0-9])?\\z"));
    if (name.size() <= LONGEST_HOST_NAME && format.match(name).hasMatch()) return QString();
    return QString(QLatin1String("\"%1\" is no host name such as panel.example")).arg(name);
}

/// At most 9 digits: the product with the largest unit fits into 64 bits.
std::optional<qint64> sizeBytes(const QString& text)
{
    static const QRegularExpression format(QLatin1String("\\A([0-9]{1,9})(KiB|MiB|GiB)\\z"));
    const QRegularExpressionMatch match = format.match(text);
    for (const SizeUnit& unit : SIZE_UNITS) {
        if (match.captured(2) != QLatin1String(unit.name)) continue;
        const qint64 bytes = match.captured(1).toLongLong() * unit.bytes;
        return bytes <= MOST_BYTES ? std::make_optional(bytes) : std::nullopt;
    }
    return std::nullopt;
}
