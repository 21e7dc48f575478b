#ifndef LINK_JOBS_H
#define LINK_JOBS_H

#include "machine/jobAudit.h"
#include "machine/recipeRun.h"
#include "session/linkRun.h"
#include "values/linkValues.h"

#include <map>
#include <memory>
#include <mutex>

/// The writes and recipes of one link that have not ended. Each ends once, by the PLC's answer, by
/// the loss of the link, or by the link's end:
///
///     write(), transfer() --- the link is up ----------> handed in --- jobEnded() ---> over
///               |                                            |
///               |                                            +--- endRest() ---------> over
///               +--- it is not, or too many wait ----------------------------------> over, unsent
///
/// A recipe is several jobs of the link, one behind the other. The audit is told every end before
/// the one who asked.
///
/// write() and transfer() are called by any thread, jobEnded() and recipeProgress() by the link's
/// thread, the others by the main thread.
class LinkJobs
{
public:
    enum { MOST_WRITES = 2000, MOST_RECIPES = 16 };

    LinkJobs(LinkValues& values, JobAudit& audit, const StationClock& clock);

    /// From now on jobs are handed in to the run, until close().
    void open(LinkRun& run);

    /// No job is handed in any more. Those that the run has are ended by it.
    /// @param why  in words; the first reason stays
    void close(const QString& why);

    /// Ends the jobs that the run did not end. Call it behind the end of the run.
    void endRest();

    /// See MachineLink.
    quint64 write(int tag, const QByteArray& bytes, const QString& from, WriteEnded ended);
    quint64 transfer(const RecipeRequest& request, const QString& from, RecipeEnded ended);

    /// A job of the link has ended, or a recipe's job has transferred `done` blocks.
    void jobEnded(const JobEnd& end);
    void recipeProgress(int job, int done);

private:
    struct Write
    {
        JobAsked asked;
        int tag = 0;
        QByteArray bytes;
        WriteEnded ended;
    };

    struct Recipe
    {
        JobAsked asked;
        std::unique_ptr<RecipeRun> run; ///< never null
        RecipeEnded ended;
        qint64 toldAt = 0; ///< when its progress was told last, on the steady clock
    };

    JobAsked asked(const QString& from) const;
    QString problem(size_t waiting, size_t most) const;
    void handIn(int job, const Tag& tag, const QByteArray& bytes);
    void end(const Write& write, WriteEnd end) const;
    void end(const Recipe& recipe, RecipeEnd end) const;
    void refuse(const JobAsked& by, const RecipeRequest& request, const QString& reason,
                const RecipeEnded& ended) const;
    void writeJobEnded(const JobEnd& end);
    void recipeJobEnded(const JobEnd& end);

    LinkValues& m_values; ///< guards itself
    JobAudit& m_audit;    ///< guards itself
    const StationClock& m_clock;

    // All members below are guarded by m_mutex. It may be held in calls of the run and the values:
    // both call back without a lock of their own.
    mutable std::mutex m_mutex;
    LinkRun* m_run = nullptr; ///< null: not open
    bool m_isClosed = false;
    QString m_whyClosed; ///< before open(), too
    int m_lastJob = 0;
    std::map<int, Write> m_writes;   ///< by job
    std::map<int, Recipe> m_recipes; ///< by the job of the step under way
};

#endif
