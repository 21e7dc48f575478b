#ifndef EPOLL_H
#define EPOLL_H

#include "links/descriptor.h"

#include <QtGlobal>

#include <vector>

/// The descriptors that the HTTP thread waits for.
class Epoll
{
public:
    enum Watch {
        ALWAYS, ///< told as long as there is something to read
        ONCE    ///< told once, then silent until watched again
    };

    /// @throws HttpError when the system has no descriptor left
    Epoll();

    /// Watches a descriptor for bytes, a new connection or an end. May be called again for the same
    /// one.
    /// @return false when the system has no memory left for it
    bool watch(int descriptor, Watch watch) const;

    /// A descriptor that is not watched is left out.
    void forget(int descriptor) const;

    /// Waits for the descriptors.
    /// @param milliseconds  longest wait; negative: no limit
    /// @return those that have something, at most 64 of them
    std::vector<int> wait(int milliseconds) const;

private:
    const Descriptor m_epoll;
};

#endif
