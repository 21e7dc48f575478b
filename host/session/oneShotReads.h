#ifndef ONE_SHOT_READS_H
#define ONE_SHOT_READS_H

#include "plan/readPlan.h"
#include "session/sessionSink.h"

#include <deque>
#include <map>
#include <optional>
#include <vector>

/// The blocks that are read once: those of the user's jobs, and the probes of silent stations. The
/// driver reports the end of the block that was queued last only, and drops all of them when one is
/// given up, so it is handed one at a time.
class OneShotReads
{
public:
    struct Read
    {
        ReadBlock block;
        int job = 0;
        bool probe = false; ///< sent once, to see whether the station is back
    };

    void add(int job, const std::vector<ReadBlock>& blocks);

    /// Goes ahead of the jobs.
    void addProbe(const ReadBlock& block);

    /// The block that the driver is to be handed now; none while one is under way.
    std::optional<Read> start();

    bool isUnderWay() const
    {
        return m_underWay.has_value();
    }
    bool isProbeUnderWay() const
    {
        return m_underWay && m_underWay->probe;
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
