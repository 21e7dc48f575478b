#include "history/historyFile.h"

#include "history/historySchema.h"
#include "history/rowPacking.h"
#include "history/seriesReader.h"

#include <algorithm>

HistoryFile::HistoryFile(const QString& name, const HistoryCap& cap, const OpenRun& run)
    : m_name(name),
      m_cap(cap),
      m_file(openHistoryFile(name)),
      m_addSeries(*m_file, "INSERT OR IGNORE INTO series (link, tag, era) VALUES (?, ?, ?)"),
      m_findSeries(*m_file, "SELECT id FROM series WHERE link = ? AND tag = ? AND era = ?"),
      m_run(run)
{
    m_identity = m_file->number("SELECT id FROM identity");
    m_fresh = m_file->number("SELECT count(*) FROM fresh");
    m_rows = m_fresh + m_file->number("SELECT sum(rows) FROM spans WHERE level = 0");
    m_sequence = m_file->number("SELECT max(sequence) FROM runs");
    findRun();
}

void HistoryFile::findRun()
{
    SqliteStatement newest(*m_file,
                           "SELECT id, era, begin, end FROM runs ORDER BY id DESC LIMIT 1");
    if (!newest.next()) return;
    m_hadRun = newest.integer(0) == m_run.id && newest.integer(2) == m_run.begin &&
               newest.integer(3) == m_run.end;
    m_isInRun = m_hadRun;
    m_era = newest.integer(1);
    m_lastEnd = newest.integer(3);
}

/// The clock was set back when the run before ends behind the begin.
void HistoryFile::beginRun(qint64 begin)
{
    if (m_lastEnd > begin) {
        ++m_era;
        m_series.clear();
    }
    SqliteStatement insert(*m_file, "INSERT INTO runs (id, era, begin, end, sequence) VALUES"
                                    " ((SELECT coalesce(max(id), 0) + 1 FROM runs), ?, ?, ?, ?)");
    insert.bind(0, m_era).bind(1, begin).bind(2, begin).bind(3, m_sequence).run();
    m_run.id = m_file->number("SELECT max(id) FROM runs");
    m_run.begin = m_run.end = m_lastEnd = begin;
    m_isInRun = true;
}

void HistoryFile::endRun(qint64 end)
{
    m_run.end = m_lastEnd = std::max(m_run.end, end);
    SqliteStatement update(*m_file, "UPDATE runs SET end = ?, sequence = ? WHERE id = ?");
    update.bind(0, m_run.end).bind(1, m_sequence).bind(2, m_run.id).run();
}

qint64 HistoryFile::seriesOf(int tag, const HistoryIntake::TagName& name)
{
    const auto known = m_series.find(tag);
    if (known != m_series.end()) return known->second;
    m_addSeries.bindText(0, name.link).bindText(1, name.tag).bind(2, m_era).run();
    m_findSeries.bindText(0, name.link).bindText(1, name.tag).bind(2, m_era);
    const qint64 series = m_findSeries.next() ? m_findSeries.integer(0) : 0;
    m_findSeries.reset();
    m_series[tag] = series;
    return series;
}

/// A run ends where its last look was, or behind its last row.
void HistoryFile::write(const HistoryIntake::Taken& taken,
                        const std::vector<HistoryIntake::TagName>& tags)
{
    SqliteTransaction transaction(*m_file, SqliteTransaction::WRITE);
    SqliteStatement insert(
        *m_file, "INSERT INTO fresh (sequence, series, time, state, value) VALUES (?, ?, ?, ?, ?)");
    if (!m_isInRun) beginRun(m_run.begin);
    for (const HistoryIntake::Note& note : taken.notes) {
        if (note.kind == HistoryIntake::Note::BREAK) {
            endRun(note.end);
            beginRun(note.begin);
            continue;
        }
        m_run.end = std::max(m_run.end, note.row.time + 1);
        insert.bind(0, ++m_sequence).bind(1, seriesOf(note.tag, tags[size_t(note.tag)]));
        insert.bind(2, note.row.time).bind(3, rowState(note.row));
        insert.bindNumber(4, note.row.value).run();
        ++m_fresh;
        ++m_rows;
    }
    endRun(taken.until);
    transaction.commit();
}

void HistoryFile::keepInOrder(const std::atomic<bool>& isHurried)
{
    if (isHurried) return;
    keepLogSmall(*m_file, m_name, m_cap);
    if (m_fresh >= m_cap.freshRows) {
        if (!packFreshRows(*m_file, isHurried)) return;
        m_fresh = 0;
        keepLogSmall(*m_file, m_name, m_cap);
    }
    const qint64 before = m_dropped;
    keepWithinCap(*m_file, m_name, m_cap, m_dropped);
    m_rows -= m_dropped - before;
}
