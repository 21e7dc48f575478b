#ifndef THREADED_HOST_H
#define THREADED_HOST_H

#include "benchHost.h"
#include "plcModel.h"

#include <atomic>
#include <mutex>
#include <thread>

/// The loaded driver, the host's blocks, and a model PLC behind them.
class ThreadedHost : public BenchHost
{
public:
    enum { STATION = 1, RECIPE_WORDS = 16, RECIPE_ADDRESS = 3200 };

    explicit ThreadedHost(ValueChangeCallBack callBack = nullptr);

    /// Reads the plan anew: a few words and bits.
    void poll() const;
    void setRecipe() const;
    void setPage() const;
    /// One request, its reply from the PLC, and its end; false with nothing to send.
    bool exchange();
    void write(int address, int value) const
    {
        BenchHost::write({STATION, "MW", address, 1}, {value});
    }
    int read(int address) const
    {
        return shown(STATION, "MW", address);
    }
    void readOnce(int address) const
    {
        BenchHost::readOnce({STATION, "MW", address, 2});
    }

    PlcModel plc; ///< of the communication thread
};

/// Makes `step` over and over on a thread of its own until it is told to end. What tells it orders
/// nothing else between the threads.
class RepeatingThread
{
public:
    template <typename Step>
    explicit RepeatingThread(Step step)
        : m_thread([this, step]() mutable {
              while (!m_ended.load(std::memory_order_relaxed)) {
                  step();
                  m_steps.fetch_add(1, std::memory_order_relaxed);
              }
          })
    {
    }
    ~RepeatingThread()
    {
        end();
    }

    bool hasMade(int steps) const
    {
        return m_steps.load(std::memory_order_relaxed) >= steps;
    }
    void await(int steps) const
    {
        while (!hasMade(steps))
            std::this_thread::yield();
    }
    void end()
    {
        m_ended.store(true, std::memory_order_relaxed);
        if (m_thread.joinable()) m_thread.join();
    }

private:
    std::atomic<bool> m_ended{false};
    std::atomic<int> m_steps{0};
    std::thread m_thread;
};

#endif
