#ifndef HISTORY_WRITER_H
#define HISTORY_WRITER_H

#include "history/historyFile.h"
#include "history/historyReader.h"
#include "plant/logPosition.h"

#include <optional>

/// How much the history holds, and whether it is written.
struct HistoryStanding
{
    qint64 rows = 0;
    qint64 dropped = 0; ///< rows since the start that found no room or were dropped for the cap
    QString trouble;    ///< why it is not written; empty: it is
};

/// Writes what the intake noted to the file, turn by turn, and gets over trouble with the file.
///
///               write fails                     10 s later
///     WRITTEN --------------> in TROUBLE -------------------> opened anew --> WRITTEN
///        |                       ^                                |
///        |                       +--------------------------------+ fails again
///        +--- file is broken: moved aside, a new one is made --> WRITTEN
///
/// Trouble is told once on standard error, and so is its end. Meanwhile the rows wait: first those
/// of the turn that failed, then those in the intake until it is full.
///
/// One thread takes the turns. Any thread calls the other functions.
class HistoryWriter
{
public:
    /// @param name  of the file
    HistoryWriter(const QString& name, const HistoryCap& cap, HistoryIntake& intake,
                  HistoryReader& reader, const StationClock& clock);

    /// Writes what was noted since the last turn. Call it about once a second.
    void turn();

    /// The station ends: turns only write from now on, also the one that runs. The next run puts
    /// the file in order.
    void hurry();

    HistoryStanding standing() const;

    /// As of the last commit. Never waits for the disk.
    LogPosition position() const;

private:
    void write();
    void open();
    void writeTaken();
    void fail(const QString& reason);
    void tellCommit();
    void close();
    void moveAside(const QString& reason);
    void tellStanding(const QString& trouble);

    const QString m_name;
    const HistoryCap m_cap;
    HistoryIntake& m_intake;
    HistoryReader& m_reader;
    const StationClock& m_clock;

    // Of the thread that takes the turns.
    std::unique_ptr<HistoryFile> m_file; ///< null: not open
    HistoryFile::OpenRun m_run;
    std::vector<HistoryIntake::TagName> m_tags;
    std::optional<HistoryIntake::Taken> m_taken; ///< waits to be written
    qint64 m_nextTry = 0;                        ///< on the steady clock, microseconds
    qint64 m_droppedBefore = 0;                  ///< from files that are closed
    LogPosition m_committed;

    std::atomic<bool> m_isHurried{false};

    mutable std::mutex m_mutex;
    HistoryStanding m_standing; ///< guarded by m_mutex
    LogPosition m_position;     ///< guarded by m_mutex
};

#endif
