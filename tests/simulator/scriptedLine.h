#ifndef SCRIPTED_LINE_H
#define SCRIPTED_LINE_H

#include "hexText.h"
#include "lineEnd.h"
#include "uniqueDescriptor.h"

#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>

#include <csignal>
#include <functional>
#include <string>
#include <vector>

/// A line in memory. Each step of its hosts follows a call of the loop, so that a test waits no
/// longer than the loop does. A loop that runs for 10 s is stopped: it would hang instead of fail.
class ScriptedLine : public LineEnd
{
public:
    ScriptedLine();

    /// The host's bytes, which the loop finds at its next turn.
    void hostSends(const std::string& hex);

    /// Another host asks for the line.
    void nextHostComes();

    void stop()
    {
        m_stop = 1;
    }
    const volatile std::sig_atomic_t& stopRequested() const
    {
        return m_stop;
    }

    std::string address() const override
    {
        return "scripted";
    }
    int descriptor() const override
    {
        return m_incoming.get();
    }
    int listener() const override
    {
        return m_waitingHost.get();
    }
    int departures() const override
    {
        return m_guard.get();
    }
    void hostLeft() override
    {
        timedOut = true;
        stop();
    }
    void acceptHost() override;
    Bytes receive() override;
    void send(const Bytes& bytes) override;

    std::vector<std::string> sent; ///< "1: 01 03", to the first host
    bool timedOut = false;
    std::function<void()> afterAccept = [] {};
    std::function<void()> afterReceive = [] {};
    std::function<void()> afterSend = [] {};

private:
    volatile std::sig_atomic_t m_stop = 0;
    int m_host = 1;
    UniqueDescriptor m_incoming;
    UniqueDescriptor m_hostEnd;
    UniqueDescriptor m_waitingHost;
    UniqueDescriptor m_guard;
};

#endif
