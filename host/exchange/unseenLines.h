#ifndef UNSEEN_LINES_H
#define UNSEEN_LINES_H

#include "exchange/lineTiming.h"

#include <map>

/// How long frames may take on the lines that the peer of a network link has behind it: its
/// stations may be on different ones. Nothing is known at first, so they are reckoned with as slow;
/// an answer tells how slow a line is at most. Times are microseconds.
class UnseenLines
{
public:
    explicit UnseenLines(const LineTiming& timing) : m_timing(timing) {}

    /// What so many bytes of a station may take; 0 when there is no line that is not seen.
    qint64 frame(char station, int bytes) const;

    /// So many bytes took so long, with all else that was to be waited for.
    void note(char station, int bytes, qint64 took);

private:
    struct Seen
    {
        qint64 took;
        int bytes;
    };

    const LineTiming m_timing;
    std::map<char, Seen> m_fastest;
};

#endif
