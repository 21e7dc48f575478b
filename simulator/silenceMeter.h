#ifndef SILENCE_METER_H
#define SILENCE_METER_H

#include <cstdint>
#include <optional>
#include <vector>

/// Durations in nanoseconds and their order: the latest ones, so that a simulator that runs for
/// months takes no more memory.
class Durations
{
public:
    enum { MOST_KEPT = 1000000 };

    void add(std::int64_t duration);
    std::size_t count() const
    {
        return m_all.size();
    }

    /// The smallest duration that at least `share` (0 to 1) of them do not exceed; 0 when there are
    /// none.
    std::int64_t quantile(double share) const;

private:
    std::vector<std::int64_t> m_all;
    std::size_t m_oldest = 0;
};

/// Measures how long the line was silent ahead of each request. Times are nanoseconds.
class SilenceMeter
{
public:
    /// A frame, ours or the host's, has its last byte on the wire at `at`.
    void frameEnded(std::int64_t at);

    /// The first byte of a request was seen. Ahead of any other frame there is nothing to measure.
    /// Below 0: the request began before the last frame was over.
    void requestBegan(std::int64_t at);

    /// The line was lost: what comes next follows no frame.
    void lineReset();

    const Durations& silences() const
    {
        return m_silences;
    }

private:
    std::optional<std::int64_t> m_lastEnd;
    Durations m_silences;
};

#endif
