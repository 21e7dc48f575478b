#ifndef GROWING_PAUSE_H
#define GROWING_PAUSE_H

/// The pauses between attempts that fail in a row: each is twice the one before, up to 30 s.
class GrowingPause
{
public:
    enum { LONGEST_MS = 30000 };

    explicit GrowingPause(int firstMs) : m_firstMs(firstMs), m_nextMs(firstMs) {}

    /// How long to wait now, in milliseconds.
    int take();

    /// An attempt has led somewhere.
    void startAnew()
    {
        m_nextMs = m_firstMs;
    }

private:
    const int m_firstMs;
    int m_nextMs;
};

#endif
