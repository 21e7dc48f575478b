#ifndef SILENCE_METER_H
#define SILENCE_METER_H

#include <cstdint>
#include <optional>
#include <vector>

/// Durations in nanoseconds and their quantiles. Keeps the last MOST_KEPT durations, so that the
/// memory of a simulator that runs for months stays bounded.
class Durations
{
public:
    enum { MOST_KEPT = 1000000 };

    void add(std::int64_t duration);
    std::size_t count() const
    {
        return m_all.size();
    }

    /// The smallest kept duration that at least `share` (0 to 1) of all kept durations do not
    /// exceed; 0 when there are none.
    std::int64_t quantile(double share) const;

private:
    std::vector<std::int64_t> m_all;
    std::size_t m_oldest = 0;
};

/// Measures how long the line was silent ahead of each request. Times are nanoseconds.
class SilenceMeter
{
public:
    /// The last byte of a request or a reply is on the wire at `at`.
    void frameEnded(std::int64_t at);

    /// The first byte of a request came at `at`. Measures the silence since the last frame, if
    /// there was a frame: negative when the request began before the last frame was over.
    void requestBegan(std::int64_t at);

    /// The line was lost: the next request follows no frame.
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
