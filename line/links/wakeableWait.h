#ifndef WAKEABLE_WAIT_H
#define WAKEABLE_WAIT_H

#include <QtGlobal>

#include <ctime>

/// Waits for bytes, for a time and for a wake-up from another thread at once, to the microsecond
/// where the system allows it: silent intervals are shorter than the milliseconds that Qt waits in.
class WakeableWait
{
public:
    /// Throws std::system_error when the system has no descriptor left.
    WakeableWait();
    ~WakeableWait();
    WakeableWait(const WakeableWait&) = delete;
    WakeableWait& operator=(const WakeableWait&) = delete;

    /// Ends the wait at once, or the next one. From any thread.
    void wake();

    /// @param descriptor   what bytes come from, -1: nothing
    /// @param microseconds  longest wait, 0 or more; below 0: without end
    /// @return true when the descriptor is readable, or broken
    bool wait(int descriptor, qint64 microseconds);

    /// Makes the calling thread's waits end on time; the system rounds them up otherwise.
    static void makePunctual();

private:
    enum Outcome { NOTHING, WOKEN, READABLE };

    Outcome poll(int descriptor, const timespec* longest);

    int m_wakeUp;
};

#endif
