#include "broker/topicLevels.h"

#include <QHash>

#include <string>

namespace {

const char32_t REPLACEMENT = U'_';

/// A topic has 65,535 bytes at most: four levels of so many characters fit.
enum { LONGEST_LEVEL = 4000 };

/// Control characters and those that Unicode gives no meaning (MQTT 3.1.1, 1.5.3): brokers may
/// close the connection over them.
bool isRefused(char32_t code)
{
    const bool isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
    const bool isNoCharacter = (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFEu) == 0xFFFEu;
    return isControl || isNoCharacter;
}

bool isLevelPart(char32_t code)
{
    return code != U'+' && code != U'/' && code != U'#' && !isRefused(code);
}

/// Levels that are given out, by their text without case: the last number of each.
using Taken = QHash<QString, int>;

QString freeLevel(const QString& level, Taken& taken)
{
    QString free = level;
    while (taken.contains(free.toCaseFolded())) {
        const int number = ++taken[level.toCaseFolded()];
        free = QString(QLatin1String("%1-%2")).arg(level, QString::number(number));
    }
    taken.insert(free.toCaseFolded(), 1);
    return free;
}

} // namespace

QString topicLevel(const QString& name)
{
    std::u32string level = name.toStdU32String();
    if (level.size() > LONGEST_LEVEL) level.resize(LONGEST_LEVEL);
    for (char32_t& code : level) {
        if (!isLevelPart(code)) code = REPLACEMENT;
    }
    if (level.empty()) level = REPLACEMENT;
    return QString::fromStdU32String(level);
}

std::vector<QString> topicLevels(const std::vector<QString>& names)
{
    std::vector<QString> levels;
    for (const QString& name : names)
        levels.push_back(topicLevel(name));
    Taken taken;
    for (const bool isChanged : {false, true}) {
        for (size_t at = 0; at < names.size(); ++at) {
            const bool isOther = topicLevel(names[at]) != names[at];
            if (isOther == isChanged) levels[at] = freeLevel(levels[at], taken);
        }
    }
    return levels;
}
