#include "program/configMistakes.h"

#include <algorithm>

void ConfigMistakes::add(int line, const QString& sentence)
{
    m_own.emplace_back(line, sentence);
}

void ConfigMistakes::addLines(const QString& lines)
{
    if (!m_others.contains(lines)) m_others << lines;
}

QString ConfigMistakes::text() const
{
    std::vector<std::pair<int, QString>> byLine = m_own;
    std::stable_sort(byLine.begin(), byLine.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    QStringList lines;
    for (const auto& mistake : byLine)
        lines << QString(QLatin1String("%1: line %2: %3"))
                     .arg(m_fileName, QString::number(mistake.first), mistake.second);
    return (lines + m_others).join(QLatin1Char('\n'));
}
