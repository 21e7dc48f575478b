#include "output/tableColumns.h"

#include "output/columnText.h"
#include "plan/printableText.h"

#include <QStringList>

#include <algorithm>

namespace {

enum {
    GAP = 2,
    SHORTEST_NAME = 8,
    SHORTEST_ADDRESS = 7,
    LONGEST_ADDRESS = 12,
    DECIMAL_WIDTH = 14, ///< length of the longest float
    AGE_WIDTH = 6,
    CHANGES_WIDTH = 8,
    SHORTEST_STATE = 12
};

QString ageText(qint64 ms)
{
    enum : qint64 { SECOND = 1000, MINUTE = 60 * SECOND, HOUR = 60 * MINUTE, DAY = 24 * HOUR };
    if (ms < 0) return QString::fromLatin1("never");
    if (ms >= DAY) return QString::number(ms / DAY) + QLatin1String(" d");
    if (ms >= HOUR) return QString::number(ms / HOUR) + QLatin1String(" h");
    if (ms >= MINUTE) return QString::number(ms / MINUTE) + QLatin1String(" min");
    return QString::number(ms / SECOND) + QLatin1Char('.') +
           QString::number(ms % SECOND / (SECOND / 10)) + QLatin1String(" s");
}

/// Takes a column and the gap before it from the free width.
/// @return the column's width; 0: it has no room
int take(int width, int& free)
{
    if (free < width + GAP) return 0;
    free -= width + GAP;
    return width;
}

} // namespace

QString stateText(const WatchRow& row)
{
    if (row.good) return QString::fromLatin1("good");
    if (row.trouble.isEmpty()) return QString::fromLatin1("bad");
    return QLatin1String("bad: ") + printableText(row.trouble);
}

/// The value comes first, then as much of a short name as there is room for, then the other columns
/// from the left. The rest goes to the name up to its length, and then to the state.
TableColumns::TableColumns(const std::vector<WatchRow>& rows, int width)
{
    int longestName = SHORTEST_NAME;
    int longestAddress = SHORTEST_ADDRESS;
    int longestValue = DECIMAL_WIDTH;
    for (const WatchRow& row : rows) {
        longestName = std::max(longestName, columnsOf(row.name));
        longestAddress = std::max(longestAddress, columnsOf(row.address));
        longestValue = std::max(longestValue, row.valueWidth);
    }
    m_value = std::clamp(width, 0, longestValue);
    m_name = std::clamp(width - m_value - GAP, 0, int(SHORTEST_NAME));
    int free = std::max(0, width - m_value - GAP - m_name);
    m_address = take(std::min(longestAddress, int(LONGEST_ADDRESS)), free);
    if (m_address > 0) m_age = take(AGE_WIDTH, free);
    if (m_age > 0) m_changes = take(CHANGES_WIDTH, free);
    if (m_changes > 0) m_state = take(SHORTEST_STATE, free);
    const int longer = std::min(free, longestName - m_name);
    if (m_name == SHORTEST_NAME) {
        m_name += longer;
        free -= longer;
    }
    if (m_state > 0) m_state += free;
}

QString TableColumns::headings() const
{
    return lineOf({QString::fromLatin1("name"), QString::fromLatin1("address"),
                   QString::fromLatin1("value"), QString::fromLatin1("age"),
                   QString::fromLatin1("changes"), QString::fromLatin1("state")});
}

QString TableColumns::line(const WatchRow& row) const
{
    return lineOf({printableText(row.name), printableText(row.address), printableText(row.value),
                   ageText(row.ageMs), QString::number(row.changes), stateText(row)},
                  !row.good && !hasState());
}

/// @param isMarked  whether "!" stands ahead of the value: in its column, or in the gap before it
QString TableColumns::lineOf(const Cells& cells, bool isMarked) const
{
    const QString gap(GAP, QLatin1Char(' '));
    QString line;
    const auto add = [&line](const QString& cell, int width, Alignment alignment,
                             const QString& ahead) {
        if (width > 0)
            line += (line.isEmpty() ? QString() : ahead) + columnText(cell, width, alignment);
    };
    const bool hasRoom = columnsOf(cells.value) < m_value;
    const QString mark = isMarked ? QString(QLatin1Char('!')) : QString();
    add(cells.name, m_name, LEFT_ALIGNED, gap);
    add(cells.address, m_address, LEFT_ALIGNED, gap);
    add(hasRoom ? mark + cells.value : cells.value, m_value, RIGHT_ALIGNED,
        hasRoom ? gap : (gap + mark).right(GAP));
    add(cells.age, m_age, RIGHT_ALIGNED, gap);
    add(cells.changes, m_changes, RIGHT_ALIGNED, gap);
    add(cells.state, m_state, LEFT_ALIGNED, gap);
    return line;
}
