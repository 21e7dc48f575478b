#include "verbs/tableOutput.h"

#include "output/figuresText.h"
#include "plan/sharedMemory.h"
#include "plan/tagText.h"
#include "program/printing.h"
#include "verbs/watchRows.h"
#include "wire/timeUnits.h"

#include <algorithm>
#include <cstdio>

namespace {

enum { REFRESH_MS = 250 };

void put(const QByteArray& bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

std::vector<int> tagsOnMemoryOf(const Tag& written, const std::vector<Tag>& tags)
{
    std::vector<int> found;
    for (size_t i = 0; i < tags.size(); ++i) {
        if (!sharingTags({written, tags[i]}).empty()) found.push_back(int(i));
    }
    return found;
}

} // namespace

TableOutput::TableOutput(const std::vector<Tag>& tags, const DriverLibrary& driver,
                         HealthCheck& health)
    : m_tags(tags),
      m_driver(driver),
      m_health(health),
      m_changes(tags.size()),
      m_changedAt(tags.size(), -1),
      m_terminal(WatchScreen::enter(), WatchScreen::leave()),
      m_view(m_terminal.hasKeys() ? TableView::WITH_KEYS : TableView::WITHOUT_KEYS,
             [this](int tag, const QString& value) { return valueProblem(tag, value); })
{
    for (const Tag& tag : tags)
        m_writeProblems.push_back(writeProblem(tag, driver));
}

News TableOutput::wait(HostProgram& host, int ms)
{
    const int longest = m_keys.isIncomplete() ? std::min<int>(ms, KeyReader::PAUSE_MS) : ms;
    const QByteArray bytes = m_terminal.waitForKeys(longest);
    for (const Key& key : bytes.isEmpty() ? m_keys.pause() : m_keys.read(bytes)) {
        m_view.press(key);
        m_isPressed = true;
    }
    return host.next(0);
}

void TableOutput::show(const News& news, HostProgram& host)
{
    noteChanges(news);
    endWrites(news, host.link().now());
    if (const std::optional<TableView::Write> write = m_view.takeWrite()) startWrite(host, *write);
    draw(host);
}

/// Draws when a frame is due, after a key, and when the screen is empty.
void TableOutput::draw(HostProgram& host)
{
    const TableTerminal::Attention attention = m_terminal.attend();
    const qint64 now = host.link().now();
    const bool isEmpty = attention == TableTerminal::ENTERED;
    if (now < m_nextFrame && !m_isPressed && !isEmpty) return;
    m_nextFrame = now + REFRESH_MS * MILLISECOND;
    m_isPressed = false;
    m_view.update(rows(host, now));
    if (attention == TableTerminal::HIDDEN) return;
    const LinkFigures figures = host.values().figures(now);
    const TableTerminal::Size size = TableTerminal::size();
    m_view.setPage(WatchScreen::page(m_view, figures, size.columns, size.rows));
    const QByteArray frame = WatchScreen::frame(m_view, figures, size.columns, size.rows);
    put(isEmpty ? WatchScreen::enter() + frame : frame);
    m_isDrawn = true;
}

void TableOutput::end(const LinkFigures& figures)
{
    m_terminal.leave();
    const QString line = figuresText(figures);
    if (m_isDrawn) printLastTable(int(line.size()));
    printLine(stdout, line);
    std::fflush(stdout);
    JobEnd ended;
    ended.outcome = JobEnd::LOST;
    ended.reason = QLatin1String("not confirmed: the watch ended; what became of it is not known");
    for (const auto& [job, pending] : m_writes)
        printLine(stderr, QLatin1String("kakb-host: ") + failureText(pending.assigned, ended));
}

/// Leaves room for the figures below, which the terminal wraps, and for the shell's prompt.
void TableOutput::printLastTable(int figuresLength) const
{
    enum { HEADINGS = 1, COUNT_OF_HIDDEN_ROWS = 1, PROMPT = 1 };
    const TableTerminal::Size size = TableTerminal::size();
    const int figures = figuresLength / size.columns + 1;
    const int lines = size.rows - HEADINGS - COUNT_OF_HIDDEN_ROWS - PROMPT - figures;
    for (const QString& line : WatchScreen::lastTable(m_view, size.columns, std::max(1, lines)))
        printLine(stdout, line);
}

QString TableOutput::valueProblem(int tag, const QString& value) const
{
    const Tag& target = m_tags[size_t(tag)];
    try {
        assignmentOf(target.name + QLatin1Char('=') + value, target, value, m_driver,
                     REFUSE_NON_FINITE);
        return QString();
    } catch (const VerbFailure& failure) {
        return QString::fromUtf8(failure.what());
    }
}

std::vector<TagState> TableOutput::states(const HostProgram& host) const
{
    std::vector<TagState> states = host.values().tags();
    for (const auto& [job, pending] : m_writes) {
        for (const auto& [tag, read] : pending.read) {
            states[size_t(tag)].bytes = read.bytes;
            states[size_t(tag)].changes = read.changes;
        }
    }
    return states;
}

std::vector<WatchRow> TableOutput::rows(const HostProgram& host, qint64 now) const
{
    const std::vector<TagState> current = states(host);
    std::vector<WatchRow> rows;
    for (size_t i = 0; i < m_tags.size(); ++i) {
        rows.push_back(watchRow(m_tags[i], current[i], now));
        rows.back().changedAt = m_changedAt[i];
        rows.back().writeProblem = m_writeProblems[i];
    }
    return rows;
}

/// A tag that turns bad or good is news as well, but no change of its value.
void TableOutput::noteChanges(const News& news)
{
    for (const News::Change& change : news.changes) {
        const size_t tag = size_t(change.tag);
        if (change.state.changes > m_changes[tag]) m_changedAt[tag] = change.time;
        m_changes[tag] = change.state.changes;
    }
}

void TableOutput::startWrite(HostProgram& host, const TableView::Write& write)
{
    const Tag& target = m_tags[size_t(write.tag)];
    Pending pending = {assignmentOf(write.value, target, write.value, m_driver, REFUSE_NON_FINITE),
                       {}};
    const std::vector<TagState> read = states(host);
    for (const int tag : tagsOnMemoryOf(target, m_tags)) {
        pending.read[tag] = read[size_t(tag)];
        m_health.writeStarted(tag);
    }
    m_view.tell(
        QString(QLatin1String("%1 = %2 is being written")).arg(labelText(target), write.value));
    const int job = startWrites(host, {pending.assigned}).front();
    m_writes.emplace(job, std::move(pending));
    m_isPressed = true;
}

void TableOutput::endWrites(const News& news, qint64 now)
{
    for (const JobEnd& ended : news.jobEnds) {
        const auto found = m_writes.find(ended.job);
        if (found == m_writes.end()) continue;
        const Pending& pending = found->second;
        m_view.tell(ended.outcome == JobEnd::DONE ? confirmedText(pending.assigned)
                                                  : failureText(pending.assigned, ended));
        for (const auto& [tag, read] : pending.read)
            m_health.writeEnded(tag, now);
        m_writes.erase(found);
        m_isPressed = true;
    }
}
