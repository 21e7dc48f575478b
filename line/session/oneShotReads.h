#ifndef ONE_SHOT_READS_H
#define ONE_SHOT_READS_H

#include "plan/readPlan.h"
#include "session/sessionSink.h"

#include <deque>
#include <map>
#include <optional>
#include <vector>

/// The blocks to read once, for the user's jobs or to fetch written values. The driver gets one
/// block at a time: it reports only the end of the block that was queued last, and drops all its
/// queued reads when it gives one up.
class OneShotReads
{
public:
    struct Read
    {
        ReadBlock block;
        int job = 0;
    };

    /// Job number of reads that belong to no job. No end is reported.
    enum { NO_JOB = 0 };

    void add(int job, const std::vector<ReadBlock>& blocks);

    /// Reads a block for no job, to fetch a written value. A read of the same words that still
    /// waits serves both.
    void addAfterWrite(const ReadBlock& block);

    /// Starts the next block. None is started while a block is under way.
    std::optional<Read> start();

    bool isUnderWay() const
    {
        return m_underWay.has_value();
    }

    /// The block under way; null: none.
    const ReadBlock* block() const
    {
        return m_underWay ? &m_underWay->block : nullptr;
    }

    /// The PLC refused the block under way: its parts are read next, for the same job.
    void split(const std::vector<ReadBlock>& parts);

    /// The block under way was read. A job ends with its last block. Its end has the values of the
    /// blocks.
    /// @param values  of the block, in the format of intf_getData
    void done(const QByteArray& values);

    /// The block under way failed. The job's end has the outcome and the place of its first
    /// failure, and the troubles of its first failures.
    /// @param block  the addresses of the block
    void failed(JobEnd::Outcome outcome, const QString& block, const QString& reason);

    /// Ends all jobs as lost.
    /// @param why  in words
    void dropAll(const QString& why);

    std::vector<JobEnd> takeEnded();

private:
    struct Job
    {
        int blocksLeft = 0;
        int failures = 0;
        JobEnd end;
    };

    static void noteFailure(Job& job, JobEnd::Outcome outcome, const QString& block,
                            const QString& reason);
    void blockOver(int number);

    std::deque<Read> m_waiting;
    std::optional<Read> m_underWay;
    std::map<int, Job> m_jobs;
    std::vector<JobEnd> m_ended;
};

#endif
