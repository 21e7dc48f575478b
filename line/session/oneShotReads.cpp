#include "session/oneShotReads.h"

#include <utility>

void OneShotReads::add(int job, const std::vector<ReadBlock>& blocks)
{
    if (blocks.empty()) {
        m_ended.emplace_back().job = job;
        return;
    }
    if (job != NO_JOB) {
        m_jobs[job].end.job = job;
        m_jobs[job].blocksLeft += int(blocks.size());
    }
    for (const ReadBlock& block : blocks)
        m_waiting.push_back({block, job});
}

std::optional<OneShotReads::Read> OneShotReads::start()
{
    if (m_underWay || m_waiting.empty()) return std::nullopt;
    m_underWay = m_waiting.front();
    m_waiting.pop_front();
    return m_underWay;
}

void OneShotReads::ended(JobEnd::Outcome outcome, const QString& trouble)
{
    if (!m_underWay) return;
    const Read read = *std::exchange(m_underWay, std::nullopt);
    if (read.job == NO_JOB) return;
    const auto found = m_jobs.find(read.job);
    JobEnd& end = found->second.end;
    if (outcome != JobEnd::DONE && end.outcome == JobEnd::DONE) {
        end.outcome = outcome;
        end.trouble = trouble;
    }
    if (--found->second.blocksLeft > 0) return;
    m_ended.push_back(end);
    m_jobs.erase(found);
}

void OneShotReads::dropAll(const QString& why)
{
    m_underWay.reset();
    m_waiting.clear();
    for (const auto& [job, unfinished] : std::exchange(m_jobs, {})) {
        JobEnd end;
        end.job = job;
        end.outcome = JobEnd::LOST;
        end.trouble = why;
        m_ended.push_back(end);
    }
}

std::vector<JobEnd> OneShotReads::takeEnded()
{
    return std::exchange(m_ended, {});
}
