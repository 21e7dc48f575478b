#ifndef WAKEABLE_WAIT_H
#define WAKEABLE_WAIT_H

#include <QtGlobal>

#include <ctime>

/// Waits for bytes, for a time and for a wake-up from another thread, all at once. Times are exact
/// to microseconds where the system allows it. Qt waits in whole milliseconds, which is too coarse
/// for silent intervals.
///
/// One thread calls wait(); every thread may call wake().
class WakeableWait
{
public:
    /// Throws std::system_error when the system has no descriptor left.
    WakeableWait();
    ~WakeableWait();
    WakeableWait(const WakeableWait&) = delete;
    WakeableWait& operator=(const WakeableWait&) = delete;

    /// Ends the current wait at once. Without a current wait, the next wait ends at once.
    void wake();

    /// @param descriptor    the descriptor to watch; -1: none
    /// @param microseconds  longest wait; negative: no limit
    /// @return true when the descriptor is readable or broken
    bool wait(int descriptor, qint64 microseconds);

    /// Makes the waits of the calling thread end on time. Otherwise the system rounds them up.
    static void makePunctual();

private:
    enum Outcome { NOTHING, WOKEN, READABLE };

    Outcome poll(int descriptor, const timespec* longest);

    int m_wakeUp; ///< event descriptor, constant after construction
};

#endif
