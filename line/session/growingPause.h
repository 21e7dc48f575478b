#ifndef GROWING_PAUSE_H
#define GROWING_PAUSE_H

/// The pauses between consecutive failed attempts. Each pause is twice as long as the pause before,
/// up to a longest one, or the first one where that is longer.
class GrowingPause
{
public:
    enum { LONGEST_MS = 30000 };

    explicit GrowingPause(int firstMs, int longestMs = LONGEST_MS)
        : m_firstMs(firstMs), m_longestMs(longestMs), m_nextMs(firstMs)
    {
    }

    /// The pause after this failure, in milliseconds. The next pause is longer.
    int take();

    /// An attempt succeeded: the next pause is the first pause again.
    void startAnew()
    {
        m_nextMs = m_firstMs;
    }

private:
    const int m_firstMs;
    const int m_longestMs;
    int m_nextMs;
};

#endif
