#include "historyModel.h"

#include <algorithm>
#include <cmath>

void HistoryModel::beginRun(qint64 time)
{
    m_runs.push_back({time, time, std::vector<std::vector<HistoryRow>>(size_t(m_tags))});
}

void HistoryModel::endRun(qint64 time)
{
    m_runs.back().end = std::max(m_runs.back().end, time);
}

qint64 HistoryModel::add(int tag, const HistoryRow& row)
{
    HistoryRow kept = row;
    kept.sequence = ++m_rows;
    m_runs.back().rows[size_t(tag)].push_back(kept);
    endRun(row.time + 1);
    return kept.sequence;
}

/// Puts the run's values in place of those that earlier runs told for the same time.
void HistoryModel::tell(const Run& run, int tag, qint64 from, const std::set<qint64>& left,
                        std::vector<Instant>& instants) const
{
    std::optional<double> held;
    auto row = run.rows[size_t(tag)].begin();
    const auto end = run.rows[size_t(tag)].end();
    for (qint64 time = run.begin; time < run.end; ++time) {
        Instant instant;
        bool isRowHere = false;
        for (; row != end && row->time == time; ++row) {
            if (!left.count(row->sequence)) continue;
            isRowHere = true;
            held = row->isGood() ? std::optional<double>(row->value) : std::nullopt;
            if (held) instant.push_back(*held);
        }
        if (!isRowHere && held) instant.push_back(*held);
        if (time >= from && size_t(time - from) < instants.size())
            instants[size_t(time - from)] = instant;
    }
}

std::vector<HistoryBucket> HistoryModel::buckets(int tag, const HistoryQuery& query,
                                                 const std::set<qint64>& left) const
{
    std::vector<Instant> instants(size_t(query.until - query.from));
    for (const Run& run : m_runs)
        tell(run, tag, query.from, left, instants);
    std::vector<HistoryBucket> buckets;
    for (int i = 0; i < query.points; ++i) {
        const auto edge = [&](int number) {
            return (query.until - query.from) * number / query.points;
        };
        HistoryBucket bucket;
        bucket.time = query.from + edge(i);
        for (qint64 at = edge(i); at < edge(i + 1); ++at) {
            for (const double value : instants[size_t(at)]) {
                bucket.minimum = bucket.isGood ? std::fmin(bucket.minimum, value) : value;
                bucket.maximum = bucket.isGood ? std::fmax(bucket.maximum, value) : value;
                bucket.last = value;
                bucket.isGood = true;
            }
        }
        buckets.push_back(bucket);
    }
    return buckets;
}
