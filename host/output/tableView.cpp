#include "output/tableView.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace {

/// Changes the typed text. Keys without a character change nothing.
void edit(QString& text, const Key& key)
{
    if (key.kind == Key::BACKSPACE) {
        std::u32string characters = text.toStdU32String();
        if (!characters.empty()) characters.pop_back();
        text = QString::fromStdU32String(characters);
    } else if (key.kind == Key::TEXT && text.size() < TableView::LONGEST_INPUT) {
        text += key.text;
    }
}

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

} // namespace

void TableView::update(std::vector<WatchRow> rows)
{
    m_rows = std::move(rows);
    arrange();
}

void TableView::setPage(int lines)
{
    m_page = std::max(0, lines);
    scrollToMark();
}

void TableView::press(const Key& key)
{
    switch (m_mode) {
    case BROWSING:
        return browse(key);
    case FILTERING:
        return typeFilter(key);
    case TYPING_VALUE:
        return typeValue(key);
    case CONFIRMING:
        return confirm(key);
    case SHOWING_KEYS:
        m_mode = BROWSING;
    }
}

std::optional<TableView::Write> TableView::takeWrite()
{
    return std::exchange(m_write, std::nullopt);
}

/// The mark stays on its tag. When the filter hides the tag, the mark goes to the row that takes
/// its place.
void TableView::arrange()
{
    const int before = markedPosition();
    m_order = shownRows(m_rows, m_filter, m_sorting);
    if (m_keys == WITHOUT_KEYS) return;
    if (markedPosition() < 0) moveTo(before);
    scrollToMark();
}

/// Position of the mark in the order; -1: it is not shown.
int TableView::markedPosition() const
{
    const auto found = std::find(m_order.begin(), m_order.end(), m_marked);
    return found == m_order.end() ? -1 : int(found - m_order.begin());
}

void TableView::moveTo(int position)
{
    const int last = int(m_order.size()) - 1;
    m_marked = last < 0 ? -1 : m_order[std::size_t(std::clamp(position, 0, last))];
    scrollToMark();
}

void TableView::move(int rows)
{
    moveTo(std::max(0, markedPosition()) + rows);
}

void TableView::scrollToMark()
{
    const int page = std::max(1, m_page);
    const int position = std::max(0, markedPosition());
    m_top = std::clamp(m_top, std::max(0, position - page + 1), position);
    m_top = std::min(m_top, std::max(0, int(m_order.size()) - page));
}

void TableView::browse(const Key& key)
{
    m_message.clear();
    const int page = std::max(1, m_page);
    switch (key.kind) {
    case Key::UP:
        return move(-1);
    case Key::DOWN:
        return move(1);
    case Key::PAGE_UP:
        return move(-page);
    case Key::PAGE_DOWN:
        return move(page);
    case Key::HOME:
        return moveTo(0);
    case Key::END:
        return moveTo(int(m_order.size()) - 1);
    case Key::ESCAPE:
        return setFilter(QString());
    case Key::TEXT:
        return browseText(key.text);
    default:
        return;
    }
}

void TableView::browseText(const QString& pressed)
{
    if (pressed == QLatin1String("q")) {
        m_isOver = true;
    } else if (pressed == QLatin1String("/")) {
        m_mode = FILTERING;
    } else if (pressed == QLatin1String("s")) {
        m_sorting = nextOrder(m_sorting);
        arrange();
        tell(text("sorted by ") + orderText(m_sorting));
    } else if (pressed == QLatin1String("w")) {
        startValue();
    } else if (pressed == QLatin1String("?")) {
        m_mode = SHOWING_KEYS;
    }
}

void TableView::typeFilter(const Key& key)
{
    if (key.kind == Key::ENTER || key.kind == Key::ESCAPE) m_mode = BROWSING;
    if (key.kind == Key::ENTER) return;
    QString typed = m_filter;
    edit(typed, key);
    setFilter(key.kind == Key::ESCAPE ? QString() : typed);
}

void TableView::setFilter(const QString& filter)
{
    if (filter == m_filter) return;
    m_filter = filter;
    arrange();
}

void TableView::startValue()
{
    if (m_marked < 0) return tell(text("no tag is marked"));
    const WatchRow& target = row(m_marked);
    if (!target.writeProblem.isEmpty())
        return tell(target.label + text(" cannot be written: ") + target.writeProblem);
    m_writeTag = m_marked;
    m_value.clear();
    m_mode = TYPING_VALUE;
}

void TableView::typeValue(const Key& key)
{
    if (key.kind == Key::ENTER) return endValue();
    if (key.kind == Key::ESCAPE) {
        m_mode = BROWSING;
        return tell(text("not written"));
    }
    edit(m_value, key);
}

void TableView::endValue()
{
    m_value = m_value.trimmed();
    const QString problem = m_value.isEmpty() ? text("not written") : m_judge(m_writeTag, m_value);
    m_mode = problem.isEmpty() ? CONFIRMING : BROWSING;
    if (!problem.isEmpty()) tell(problem);
}

/// Only y writes and only n and Esc drop the value, so a key pressed by mistake does neither.
void TableView::confirm(const Key& key)
{
    const bool isText = key.kind == Key::TEXT;
    if (isText && key.text == QLatin1String("y")) {
        m_mode = BROWSING;
        m_write = Write{m_writeTag, m_value};
    } else if (key.kind == Key::ESCAPE || (isText && key.text == QLatin1String("n"))) {
        m_mode = BROWSING;
        tell(text("not written"));
    }
}

QString TableView::bottomLine() const
{
    switch (m_mode) {
    case FILTERING:
        return QString(QLatin1String("filter (Enter keeps, Esc clears): %1_")).arg(m_filter);
    case TYPING_VALUE:
        return QString(QLatin1String("value for %1: %2_")).arg(row(m_writeTag).label, m_value);
    case CONFIRMING:
        return QString(QLatin1String("write %1 into %2? y/n")).arg(m_value, row(m_writeTag).label);
    case SHOWING_KEYS:
        return text("any key goes back to the table");
    case BROWSING:
        break;
    }
    return m_message.isEmpty() ? browsingLine() : m_message;
}

/// The line of the keys begins with the place in the table and the filter: a narrow terminal cuts
/// the end.
QString TableView::browsingLine() const
{
    QStringList parts;
    const int shown = int(m_order.size());
    if (shown == 0) {
        parts << text("no rows");
    } else if (shown > m_page || shown < int(m_rows.size())) {
        const int last = std::min(m_top + std::max(1, m_page), shown);
        parts << QString(QLatin1String("%1-%2 of %3")).arg(m_top + 1).arg(last).arg(shown);
    }
    if (!m_filter.isEmpty()) parts << text("filter ") + m_filter;
    parts << text("? keys") << text("q end") << text("/ filter") << text("s sort")
          << text("w write");
    return parts.join(QLatin1String("  "));
}

QStringList keyHelp()
{
    return {text("q               ends the watch"),
            text("Up, Down        mark the row above or below"),
            text("PgUp, PgDn      scroll by a page"),
            text("Home, End       mark the first or last row"),
            text("/               filters by name or address; Enter keeps, Esc clears"),
            text("s               sorts by name, latest change, trouble, file order"),
            text("w               writes a value into the marked tag, after a question"),
            text("?               shows these keys"),
            text("Ctrl-Z          stops the watch; fg continues it")};
}
