#ifndef THREADED_HOST_H
#define THREADED_HOST_H

#include "driver/driverLibrary.h"
#include "plcModel.h"

#include <QMutex>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

/// The loaded driver, a model PLC behind it, and the host's blocks.
class ThreadedHost
{
public:
    enum { RECIPE_WORDS = 16, RECIPE_ADDRESS = 3200 };

    explicit ThreadedHost(ValueChangeCallBack callBack = nullptr);

    /// Starts the driver anew, with nothing to poll.
    void start();
    /// Reads the plan anew: a few words and bits.
    void poll() const;
    void setRecipe() const;
    void setPage() const;
    /// One request, its reply from the PLC, and its end; false with nothing to send.
    bool exchange();
    void write(int address, int value) const;
    int read(int address) const;
    void readOnce(int address) const;

    /// The flag of a transfer, under the mutex that the driver was given.
    void raise(RecipeFlag flag);
    bool isRaised(RecipeFlag flag);

    static const DriverLibrary& driver();

    std::vector<unsigned char> shared;
    std::vector<unsigned char> recipe;
    QMutex mutex;
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
