#ifndef FRAME_LOG_H
#define FRAME_LOG_H

#include "session/frameRecord.h"

#include <deque>
#include <mutex>
#include <vector>

/// A frame of a link with its place in the link's row of frames.
struct LoggedFrame
{
    quint64 number = 0; ///< counts up from 1
    qint64 time = 0;    ///< ms since 1970
    FrameRecord::Direction direction = FrameRecord::SENT;
    QByteArray bytes;
};

/// The last frames of a link. The link's thread adds; any thread reads.
class FrameLog
{
public:
    enum {
        MOST_FRAMES = 1000,
        MOST_OF_ALL_LINKS = 100000, ///< bounds the memory of a station with very many links
        LEAST_FRAMES = 100,
        MOST_BYTES_OF_FRAME = 65535
    };

    /// How many frames each log keeps where there are so many links.
    static size_t mostOfEach(size_t links);

    /// At most so many are kept from now on; MOST_FRAMES at first.
    void keep(size_t most);

    /// Of a longer frame, the first MOST_BYTES_OF_FRAME are kept.
    void add(qint64 time, FrameRecord::Direction direction, const QByteArray& bytes);

    /// The frames behind `number`, oldest first.
    std::vector<LoggedFrame> since(quint64 number) const;

    quint64 lastNumber() const;

private:
    /// All but the bytes, packed: a station with a thousand links has a million of them.
    struct Kept
    {
        quint64 time : 46; ///< ms since 1970, for two thousand years
        quint64 direction : 2;
        quint64 size : 16;
    };
    static_assert(sizeof(Kept) == 8, "the compiler does not pack it");

    void forgetOldest();

    // All members below are guarded by m_mutex.
    mutable std::mutex m_mutex;
    std::deque<Kept> m_frames; ///< oldest first; the last one's number is m_lastNumber
    std::deque<char> m_bytes;  ///< of m_frames, one frame behind the other
    quint64 m_lastNumber = 0;
    size_t m_most = MOST_FRAMES;
};

#endif
