// Qt is not built with the thread sanitizer, which therefore sees none of its mutexes and would
// take every use of one for a race. These stand before Qt's own, do the same, and tell it.

#include <QMutex>

#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

namespace {

template <typename Function> Function nextOne(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)

void QMutex::lock() QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto lockOfQt = nextOne<void (*)(QMutex*)>("_ZN6QMutex4lockEv");
    lockOfQt(this);
    __tsan_acquire(this);
}

void QMutex::unlock() noexcept
{
    static const auto unlockOfQt = nextOne<void (*)(QMutex*)>("_ZN6QMutex6unlockEv");
    __tsan_release(this);
    unlockOfQt(this);
}

bool QMutex::tryLock(int timeout) QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto tryLockOfQt = nextOne<bool (*)(QMutex*, int)>("_ZN6QMutex7tryLockEi");
    const bool locked = tryLockOfQt(this, timeout);
    if (locked) __tsan_acquire(this);
    return locked;
}

#else

// Of Qt 6's, only waiting and waking is in the library; the rest is in its header, and seen.
void QBasicMutex::lockInternal()
{
    static const auto lockOfQt =
        nextOne<void (*)(QBasicMutex*)>("_ZN11QBasicMutex12lockInternalEv");
    lockOfQt(this);
    __tsan_acquire(this);
}

void QBasicMutex::unlockInternal() noexcept
{
    static const auto unlockOfQt =
        nextOne<void (*)(QBasicMutex*)>("_ZN11QBasicMutex14unlockInternalEv");
    __tsan_release(this);
    unlockOfQt(this);
}

#endif
