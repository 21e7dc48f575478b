#include "output/watchScreen.h"

#include "output/columnText.h"
#include "output/figuresText.h"

#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <iterator>

namespace {

enum {
    GAP = 2,
    COLUMNS = 6,
    SHORTEST_NAME = 8,
    SHORTEST_ADDRESS = 7,
    LONGEST_ADDRESS = 12,
    VALUE_WIDTH = 14, ///< length of the longest float
    AGE_WIDTH = 6,
    CHANGES_WIDTH = 8,
    SHORTEST_STATE = 12
};

const char* const PLAIN = "\x1b[0m";
const char* const BOLD = "\x1b[1m";
const char* const INVERSE = "\x1b[7m";
const char* const ERASE_LINE_END = "\x1b[K";
const char* const ERASE_SCREEN_END = "\x1b[J";

struct Cells
{
    QString name, address, value, age, changes, state;
};

struct Widths
{
    int name, address, state;
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

QString stateText(const WatchRow& row)
{
    if (row.good) return QString::fromLatin1("good");
    if (row.trouble.isEmpty()) return QString::fromLatin1("bad");
    return QLatin1String("bad: ") + printableText(row.trouble);
}

Cells headings()
{
    return {QString::fromLatin1("name"),    QString::fromLatin1("address"),
            QString::fromLatin1("value"),   QString::fromLatin1("age"),
            QString::fromLatin1("changes"), QString::fromLatin1("state")};
}

Cells cellsOf(const WatchRow& row)
{
    return {printableText(row.name), printableText(row.address),   printableText(row.value),
            ageText(row.ageMs),      QString::number(row.changes), stateText(row)};
}

/// The widths depend only on names and addresses, so the columns do not move when values change.
Widths widthsFor(const std::vector<Cells>& table, int width)
{
    int longestName = SHORTEST_NAME;
    int address = SHORTEST_ADDRESS;
    for (const Cells& cells : table) {
        longestName = std::max(longestName, columnsOf(cells.name));
        address = std::max(address, columnsOf(cells.address));
    }
    address = std::min(address, int(LONGEST_ADDRESS));
    const int rest =
        width - address - VALUE_WIDTH - AGE_WIDTH - CHANGES_WIDTH - (COLUMNS - 1) * GAP;
    const int name = std::clamp(rest - SHORTEST_STATE, int(SHORTEST_NAME), longestName);
    return {name, address, std::max(int(SHORTEST_STATE), rest - name)};
}

QString lineOf(const Cells& cells, const Widths& widths)
{
    const QStringList columns = {columnText(cells.name, widths.name, LEFT_ALIGNED),
                                 columnText(cells.address, widths.address, LEFT_ALIGNED),
                                 columnText(cells.value, VALUE_WIDTH, RIGHT_ALIGNED),
                                 columnText(cells.age, AGE_WIDTH, RIGHT_ALIGNED),
                                 columnText(cells.changes, CHANGES_WIDTH, RIGHT_ALIGNED),
                                 columnText(cells.state, widths.state, LEFT_ALIGNED)};
    return columns.join(QString(GAP, QLatin1Char(' ')));
}

QString moreText(int count)
{
    return QChar(0x2026) + QLatin1Char(' ') + QLocale(QLocale::English).toString(count) +
           QLatin1String(" more");
}

/// The figures in one or two lines. Two spaces separate the figures, so the line is broken there.
QStringList figureLines(const QString& figures, int width)
{
    if (figures.size() <= width) return QStringList(figures);
    const int end = int(figures.lastIndexOf(QLatin1String("  "), std::max(0, width)));
    if (end < 1) return QStringList(figures);
    return {figures.left(end), figures.mid(end).trimmed()};
}

/// Places each line by its number, because a line feed on the last line would scroll the terminal.
/// The last column stays empty, because erasing the rest of a full line removes its last character.
class FrameBytes
{
public:
    FrameBytes(int width, int height) : m_width(width), m_linesLeft(height) {}

    int linesLeft() const
    {
        return m_linesLeft;
    }

    void addLine(const QString& text, const char* look = "")
    {
        if (m_linesLeft == 0) return;
        --m_linesLeft;
        m_bytes += "\x1b[" + QByteArray::number(++m_line) + ";1H" + look;
        m_bytes += cutText(text, m_width).toUtf8();
        if (*look) m_bytes += PLAIN;
        m_bytes += ERASE_LINE_END;
    }

    QByteArray finished() const
    {
        return m_bytes + ERASE_SCREEN_END;
    }

private:
    int m_width;
    int m_linesLeft;
    int m_line = 0;
    QByteArray m_bytes;
};

void addTable(FrameBytes& bytes, const std::vector<WatchRow>& table, int width)
{
    const int count = int(table.size());
    const int lines = std::max(0, bytes.linesLeft() - 1);
    const int shown = count <= lines ? count : std::max(0, lines - 1);
    std::vector<Cells> cells;
    std::transform(table.begin(), table.begin() + shown, std::back_inserter(cells), cellsOf);

    const Widths widths = widthsFor(cells, width);
    bytes.addLine(lineOf(headings(), widths), INVERSE);
    for (int i = 0; i < shown; ++i) {
        const bool good = table[std::size_t(i)].good;
        bytes.addLine(lineOf(cells[std::size_t(i)], widths), good ? "" : BOLD);
    }
    if (shown < count) bytes.addLine(moreText(count - shown));
}

} // namespace

QByteArray WatchScreen::frame(const std::vector<WatchRow>& table, const LinkFigures& figures,
                              int columns, int rows) const
{
    if (rows < 1) return QByteArray();
    const int width = columns - 1;
    FrameBytes bytes(width, rows);
    for (const QString& line : figureLines(liveFiguresText(figures), width)) {
        bytes.addLine(line, figures.connected ? "" : BOLD);
    }
    addTable(bytes, table, width);
    return bytes.finished();
}

QByteArray WatchScreen::enter()
{
    return "\x1b[?1049h" // alternate screen
           "\x1b[?25l"   // no cursor
           "\x1b[?7l";   // no wrapping: a wide character in a name must not move the lines below
}

QByteArray WatchScreen::leave()
{
    return "\x1b[0m"
           "\x1b[?7h"
           "\x1b[?25h"
           "\x1b[?1049l";
}
