#include "scriptedLine.h"

namespace {

const int GUARD_SECONDS = 10;

/// By value: a step may put another one in its place.
void follow(std::function<void()> step)
{
    step();
}

} // namespace

ScriptedLine::ScriptedLine()
    : m_waitingHost(eventfd(0, EFD_NONBLOCK)), m_guard(timerfd_create(CLOCK_MONOTONIC, 0))
{
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_NONBLOCK) != 0 || m_waitingHost.get() < 0 || m_guard.get() < 0)
        failLink("scripted line");
    m_incoming.reset(ends[0]);
    m_hostEnd.reset(ends[1]);
    itimerspec once = {};
    once.it_value.tv_sec = GUARD_SECONDS;
    timerfd_settime(m_guard.get(), 0, &once, nullptr);
}

void ScriptedLine::hostSends(const std::string& hex)
{
    const Bytes bytes = bytesOf(hex);
    if (write(m_hostEnd.get(), bytes.data(), bytes.size()) != ssize_t(bytes.size()))
        failLink("scripted line");
}

void ScriptedLine::nextHostComes()
{
    eventfd_write(m_waitingHost.get(), 1);
}

void ScriptedLine::acceptHost()
{
    eventfd_t waiting = 0;
    eventfd_read(m_waitingHost.get(), &waiting);
    ++m_host;
    follow(afterAccept);
}

Bytes ScriptedLine::receive()
{
    Bytes bytes(READ_BYTES);
    const ssize_t count = read(m_incoming.get(), bytes.data(), bytes.size());
    bytes.resize(count > 0 ? std::size_t(count) : 0);
    follow(afterReceive);
    return bytes;
}

void ScriptedLine::send(const Bytes& bytes)
{
    sent.push_back(std::to_string(m_host) + ": " + hexOf(bytes));
    follow(afterSend);
}
