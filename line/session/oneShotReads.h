#ifndef ONE_SHOT_READS_H
#define ONE_SHOT_READS_H

#include "plan/readPlan.h"
#include "session/sessionSink.h"

#include <deque>
#include <map>
#include <optional>
#include <vector>

/// The blocks that are read once, for the user's jobs or to fetch what was written. The driver
/// reports the end of the block that was queued last only, and drops all of them when one is
/// given up, so it is handed one at a time.
class OneShotReads
{
public:
    struct Read
    {
        ReadBlock block;
        int job = 0;
    };

    enum { NO_JOB = 0 }; ///< each of its blocks is read, whatever becomes of the others, and untold

    void add(int job, const std::vector<ReadBlock>& blocks);

    /// The block that the driver is to be handed now; none while one is under way.
    std::optional<Read> start();

    bool isUnderWay() const
    {
        return m_underWay.has_value();
    }

    /// The block under way has been read, or failed. A job ends with its last block, or with the
    /// first that fails.
    void ended(JobEnd::Outcome outcome, const QString& trouble);

    std::vector<JobEnd> takeEnded();

private:
    void dropRest(int job);

    std::deque<Read> m_waiting;
    std::optional<Read> m_underWay;
    std::map<int, int> m_blocksLeft;
    std::vector<JobEnd> m_ended;
};

#endif
