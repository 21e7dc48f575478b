#ifndef GROWING_PAUSE_H
#define GROWING_PAUSE_H

/// The pauses between consecutive failed attempts. Each pause is twice as long as the pause before,
/// up to 30 s.
class GrowingPause
{
public:
    enum { LONGEST_MS = 30000 };

    explicit GrowingPause(int firstMs) : m_firstMs(firstMs), m_nextMs(firstMs) {}

    /// The pause after this failure, in milliseconds. The next pause is longer.
    int take();

    /// An attempt succeeded: the next pause is the first pause again.
    void startAnew()
    {
        m_nextMs = m_firstMs;
    }

private:
    const int m_firstMs;
    int m_nextMs;
};

#endif
