#ifndef HISTORY_FILE_H
#define HISTORY_FILE_H

#include "history/historyCap.h"
#include "history/historyIntake.h"

#include <atomic>
#include <map>

/// The open file of the history, as its writer sees it. After an exception it is of no more use:
/// the file itself holds all commits that were done, and none half.
class HistoryFile
{
public:
    /// The run that goes on when the file is opened again.
    struct OpenRun
    {
        qint64 id = 0;    ///< 0: the run is in no file yet
        qint64 begin = 0; ///< ms since 1970
        qint64 end = 0;   ///< as in the last commit
    };

    /// @throws SqliteError, HistoryTrouble
    HistoryFile(const QString& name, const HistoryCap& cap, const OpenRun& run);

    /// Writes what was noted, in one commit, and moves the end of the run.
    /// @param tags  of which the notes tell
    /// @throws SqliteError, HistoryTrouble
    void write(const HistoryIntake::Taken& taken, const std::vector<HistoryIntake::TagName>& tags);

    /// Packs rows that are due, keeps the file below the cap and its log small.
    /// @param isHurried  somebody waits for the end, and sets it: the next run does the rest
    /// @throws SqliteError, HistoryTrouble
    void keepInOrder(const std::atomic<bool>& isHurried);

    /// As of the last commit.
    const OpenRun& run() const
    {
        return m_run;
    }

    /// Whether the file has had the run already when it was opened.
    bool hadRun() const
    {
        return m_hadRun;
    }

    /// See openHistoryFile(). Never 0.
    qint64 identity() const
    {
        return m_identity;
    }

    /// Of the last row.
    qint64 sequence() const
    {
        return m_sequence;
    }

    qint64 rows() const
    {
        return m_rows;
    }

    /// Rows that were dropped for the cap since it was opened.
    qint64 dropped() const
    {
        return m_dropped;
    }

    bool isGone()
    {
        return m_file->isGone();
    }

private:
    void findRun();
    void beginRun(qint64 begin);
    void endRun(qint64 end);
    qint64 seriesOf(int tag, const HistoryIntake::TagName& name);

    const QString m_name;
    const HistoryCap m_cap;
    const std::unique_ptr<SqliteFile> m_file;
    SqliteStatement m_addSeries, m_findSeries;
    qint64 m_identity = 0;
    OpenRun m_run;
    bool m_hadRun = false;
    bool m_isInRun = false;
    qint64 m_era = 0;
    qint64 m_lastEnd = 0;           ///< of the newest run of the era
    std::map<int, qint64> m_series; ///< of the era, by tag
    qint64 m_sequence = 0;          ///< of the last row
    qint64 m_rows = 0, m_fresh = 0, m_dropped = 0;
};

#endif
