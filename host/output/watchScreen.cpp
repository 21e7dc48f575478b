#include "output/watchScreen.h"

#include "output/columnText.h"
#include "output/figuresText.h"
#include "output/tableColumns.h"
#include "plan/printableText.h"

#include <QLocale>

#include <algorithm>

namespace {

const char* const PLAIN = "\x1b[0m";
const char* const BOLD = "\x1b[1m";
const char* const UNDERLINED = "\x1b[4m";
const char* const INVERSE = "\x1b[7m";
const char* const ERASE_LINE_END = "\x1b[K";

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
    /// @param lines  lines above the bottom line
    FrameBytes(int width, int lines) : m_width(width), m_lines(lines) {}

    int linesLeft() const
    {
        return m_lines - m_line;
    }

    void addLine(const QString& text, const QByteArray& look = QByteArray())
    {
        if (linesLeft() > 0) put(++m_line, text, look);
    }

    /// Erases the lines below the last line that addLine() has placed.
    void eraseBelow()
    {
        for (int line = m_line + 1; line <= m_lines; ++line)
            put(line, QString(), QByteArray());
    }

    void addBottomLine(const QString& text)
    {
        put(m_lines + 1, text, QByteArray());
    }

    QByteArray finished() const
    {
        return m_bytes;
    }

private:
    void put(int line, const QString& text, const QByteArray& look)
    {
        m_bytes += "\x1b[" + QByteArray::number(line) + ";1H" + look;
        m_bytes += cutText(text, m_width).toUtf8();
        if (!look.isEmpty()) m_bytes += PLAIN;
        m_bytes += ERASE_LINE_END;
    }

    const int m_width;
    const int m_lines;
    int m_line = 0;
    QByteArray m_bytes;
};

/// The marked row is inverse, a bad row is bold.
QByteArray lookOf(const TableView& view, int tag)
{
    QByteArray look;
    if (!view.rows()[std::size_t(tag)].good) look += BOLD;
    if (tag == view.marked()) look += INVERSE;
    return look;
}

/// A typed text keeps its end when the line is too long, because the user types there.
QString bottomText(const TableView& view, const TableColumns& columns, int width)
{
    const QString line = printableText(view.bottomLine());
    if (view.isTyping() && columnsOf(line) > width)
        return QChar(0x2026) + line.right(std::max(0, width - 1));
    if (view.mode() != TableView::BROWSING || columns.hasState() || view.marked() < 0) return line;
    const WatchRow& marked = view.rows()[std::size_t(view.marked())];
    return marked.good || view.isTelling() ? line : stateText(marked);
}

/// Number of rows that the table shows on so many lines below its headings. Without keys the last
/// line counts the hidden rows.
int shownCount(const TableView& view, int lines)
{
    const int count = int(view.order().size()) - view.top();
    if (count <= lines || view.hasKeys()) return std::min(count, lines);
    return std::max(0, lines - 1);
}

void addTable(FrameBytes& bytes, const TableView& view, const TableColumns& columns)
{
    const int lines = std::max(0, bytes.linesLeft() - 1);
    const int shown = shownCount(view, lines);
    bytes.addLine(columns.headings(), UNDERLINED);
    for (int i = 0; i < shown; ++i) {
        const int tag = view.order()[std::size_t(view.top()) + std::size_t(i)];
        bytes.addLine(columns.line(view.rows()[std::size_t(tag)]), lookOf(view, tag));
    }
    const int hidden = int(view.order().size()) - shown;
    if (!view.hasKeys() && hidden > 0) bytes.addLine(moreText(hidden));
}

int bottomLines(const TableView& view)
{
    return view.hasKeys() ? 1 : 0;
}

} // namespace

int WatchScreen::page(const TableView& view, const LinkFigures& figures, int columns, int rows)
{
    const int figureCount = int(figureLines(liveFiguresText(figures), columns - 1).size());
    return std::max(0, rows - figureCount - 1 - bottomLines(view));
}

QByteArray WatchScreen::frame(const TableView& view, const LinkFigures& figures, int columns,
                              int rows)
{
    if (rows < 1) return QByteArray();
    const int width = columns - 1;
    const TableColumns table(view.rows(), width);
    FrameBytes bytes(width, rows - bottomLines(view));
    for (const QString& line : figureLines(liveFiguresText(figures), width))
        bytes.addLine(line, figures.connected ? "" : BOLD);
    if (view.mode() == TableView::SHOWING_KEYS) {
        for (const QString& line : keyHelp())
            bytes.addLine(line);
    } else {
        addTable(bytes, view, table);
    }
    bytes.eraseBelow();
    if (view.hasKeys()) bytes.addBottomLine(bottomText(view, table, width));
    return bytes.finished();
}

QStringList WatchScreen::lastTable(const TableView& view, int columns, int lines)
{
    const TableColumns table(view.rows(), columns - 1);
    QStringList text(cutText(table.headings(), columns - 1));
    const int shown = shownCount(view, lines);
    for (int i = 0; i < shown; ++i) {
        const int tag = view.order()[std::size_t(view.top()) + std::size_t(i)];
        text << table.line(view.rows()[std::size_t(tag)]);
    }
    const int hidden = int(view.order().size()) - shown;
    if (hidden > 0) text << moreText(hidden);
    return text;
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
