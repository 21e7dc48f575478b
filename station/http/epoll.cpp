#include "http/epoll.h"

#include "http/httpError.h"

#include <sys/epoll.h>

Epoll::Epoll() : m_epoll(epoll_create1(EPOLL_CLOEXEC))
{
    if (m_epoll.number() < 0) throw systemHttpError("cannot make an epoll");
}

bool Epoll::watch(int descriptor, Watch watch) const
{
    epoll_event event{};
    event.events = EPOLLIN | EPOLLRDHUP | (watch == ONCE ? uint32_t(EPOLLONESHOT) : 0);
    event.data.fd = descriptor;
    return epoll_ctl(m_epoll.number(), EPOLL_CTL_MOD, descriptor, &event) == 0 ||
           epoll_ctl(m_epoll.number(), EPOLL_CTL_ADD, descriptor, &event) == 0;
}

void Epoll::forget(int descriptor) const
{
    epoll_event unused{};
    (void)epoll_ctl(m_epoll.number(), EPOLL_CTL_DEL, descriptor, &unused);
}

std::vector<int> Epoll::wait(int milliseconds) const
{
    enum { MOST_EVENTS = 64 };
    epoll_event events[MOST_EVENTS];
    const int count = epoll_wait(m_epoll.number(), events, MOST_EVENTS, milliseconds);
    std::vector<int> found;
    for (int i = 0; i < count; ++i)
        found.push_back(events[i].data.fd);
    return found;
}
