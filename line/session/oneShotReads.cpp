#include "session/oneShotReads.h"

#include <algorithm>
#include <utility>

namespace {

enum { NAMED_FAILURES = 3 };

} // namespace

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

void OneShotReads::addAfterWrite(const ReadBlock& block)
{
    const auto isSame = [&block](const Read& read) {
        return read.job == NO_JOB && read.block.station == block.station &&
               read.block.area == block.area && read.block.number == block.number &&
               read.block.count == block.count;
    };
    if (std::any_of(m_waiting.begin(), m_waiting.end(), isSame)) return;
    m_waiting.push_back({block, NO_JOB});
}

std::optional<OneShotReads::Read> OneShotReads::start()
{
    if (m_underWay || m_waiting.empty()) return std::nullopt;
    m_underWay = m_waiting.front();
    m_waiting.pop_front();
    return m_underWay;
}

void OneShotReads::split(const std::vector<ReadBlock>& parts)
{
    if (!m_underWay) return;
    const int job = std::exchange(m_underWay, std::nullopt)->job;
    if (job != NO_JOB) m_jobs[job].blocksLeft += int(parts.size()) - 1;
    for (auto part = parts.rbegin(); part != parts.rend(); ++part)
        m_waiting.push_front({*part, job});
}

void OneShotReads::noteFailure(Job& job, JobEnd::Outcome outcome, const QString& block,
                               const QString& reason)
{
    const QString trouble = block + QLatin1String(": ") + reason;
    ++job.failures;
    if (job.failures == 1) {
        job.end.outcome = outcome;
        job.end.block = block;
        job.end.reason = reason;
        job.end.trouble = trouble;
    } else if (job.failures <= NAMED_FAILURES) {
        job.end.trouble += QLatin1String("; ") + trouble;
    }
}

void OneShotReads::done(const QByteArray& values)
{
    if (!m_underWay) return;
    const int job = std::exchange(m_underWay, std::nullopt)->job;
    if (job == NO_JOB) return;
    m_jobs[job].end.values += values;
    blockOver(job);
}

void OneShotReads::failed(JobEnd::Outcome outcome, const QString& block, const QString& reason)
{
    if (!m_underWay) return;
    const int job = std::exchange(m_underWay, std::nullopt)->job;
    if (job == NO_JOB) return;
    noteFailure(m_jobs[job], outcome, block, reason);
    blockOver(job);
}

void OneShotReads::blockOver(int number)
{
    const auto found = m_jobs.find(number);
    Job& job = found->second;
    if (--job.blocksLeft > 0) return;
    if (job.failures > NAMED_FAILURES)
        job.end.trouble +=
            QString(QLatin1String("; and %1 more")).arg(job.failures - NAMED_FAILURES);
    m_ended.push_back(job.end);
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
