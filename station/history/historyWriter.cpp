#include "history/historyWriter.h"

#include "history/historySchema.h"
#include "machine/errorLines.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <utility>

namespace {

enum { BETWEEN_TRIES = 10000000 }; // microseconds

/// A name that no file has yet: history.sqlite.broken-20260131T235959Z.
QString asideName(const QString& name, qint64 time)
{
    const QString stamp = QDateTime::fromMSecsSinceEpoch(time, Qt::UTC)
                              .toString(QLatin1String("yyyyMMdd'T'HHmmss'Z'"));
    const QString first = name + QLatin1String(".broken-") + stamp;
    QString aside = first;
    for (int i = 2; QFileInfo::exists(aside); ++i)
        aside = first + QLatin1Char('-') + QString::number(i);
    return aside;
}

} // namespace

HistoryWriter::HistoryWriter(const QString& name, const HistoryCap& cap, HistoryIntake& intake,
                             HistoryReader& reader, const StationClock& clock)
    : m_name(name), m_cap(cap), m_intake(intake), m_reader(reader), m_clock(clock)
{
    m_run.begin = intake.begin();
}

void HistoryWriter::turn()
{
    if (m_file && m_file->isGone()) close();
    if (m_reader.takeBroken() && m_file) moveAside(QLatin1String("a part is damaged"));
    if (m_file || m_clock.steady() >= m_nextTry) write();
}

void HistoryWriter::hurry()
{
    m_isHurried = true;
}

/// A file that is broken is moved aside, and the rows go into a new one.
void HistoryWriter::write()
{
    for (int tries = 0; tries < 2; ++tries) {
        try {
            if (!m_file) open();
            writeTaken();
            tellStanding(QString());
            return;
        } catch (const SqliteError& error) {
            const QString reason = QString::fromUtf8(error.what());
            if (!error.isBroken() || tries > 0) return fail(reason);
            moveAside(reason);
        } catch (const HistoryTrouble& trouble) {
            return fail(QString::fromUtf8(trouble.what()));
        }
    }
}

void HistoryWriter::open()
{
    const std::unique_lock<std::mutex> noReader = m_reader.closed();
    QDir().mkpath(QFileInfo(m_name).path());
    m_file = std::make_unique<HistoryFile>(m_name, m_cap, m_run);
    const bool isWrittenElsewhere = m_run.id != 0 && !m_file->hadRun();
    if (isWrittenElsewhere) m_intake.writeAllAgain();
    const bool goesOn =
        m_file->identity() == m_committed.file && m_file->sequence() == m_committed.sequence;
    if (!goesOn) m_committed.firstNumber = m_committed.number;
}

void HistoryWriter::tellCommit()
{
    m_committed.file = m_file->identity();
    m_committed.sequence = m_file->sequence();
    m_committed.number = m_taken->number;
    m_committed.time = m_taken->until;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_position = m_committed;
}

LogPosition HistoryWriter::position() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_position;
}

/// What has waited since the trouble began goes first.
void HistoryWriter::writeTaken()
{
    while (true) {
        const bool hasWaited = m_taken.has_value();
        if (!hasWaited) {
            m_taken = m_intake.take();
            m_tags.insert(m_tags.end(), m_taken->newTags.begin(), m_taken->newTags.end());
        }
        m_file->write(*m_taken, m_tags);
        m_run = m_file->run();
        tellCommit();
        m_taken.reset();
        m_file->keepInOrder(m_isHurried);
        if (!hasWaited) return;
    }
}

void HistoryWriter::close()
{
    if (m_file) m_droppedBefore += m_file->dropped();
    m_file.reset();
}

void HistoryWriter::fail(const QString& reason)
{
    close();
    m_nextTry = m_clock.steady() + BETWEEN_TRIES;
    tellStanding(reason);
}

/// The file's log belongs to it.
void HistoryWriter::moveAside(const QString& reason)
{
    close();
    const std::unique_lock<std::mutex> noReader = m_reader.closed();
    const QString aside = asideName(m_name, m_clock.wall());
    if (!QFile::rename(m_name, aside)) return;
    for (const char* const suffix : {"-wal", "-shm"})
        QFile::rename(m_name + QLatin1String(suffix), aside + QLatin1String(suffix));
    tellOperator(QLatin1String("the history was broken (") + reason +
                 QLatin1String("); it is kept as ") + aside);
}

/// Whoever reads standing() must not wait for standard error.
void HistoryWriter::tellStanding(const QString& trouble)
{
    QString before;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        before = std::exchange(m_standing.trouble, trouble);
        if (m_file) m_standing.rows = m_file->rows();
        m_standing.dropped = m_droppedBefore + (m_file ? m_file->dropped() : 0);
    }
    if (!trouble.isEmpty() && before.isEmpty())
        tellOperator(QLatin1String("the history is not written: ") + trouble);
    if (trouble.isEmpty() && !before.isEmpty())
        tellOperator(QLatin1String("the history is written again"));
}

HistoryStanding HistoryWriter::standing() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    HistoryStanding standing = m_standing;
    standing.dropped += m_intake.dropped();
    return standing;
}
