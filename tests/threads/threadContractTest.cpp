// What a host may do with several threads, as docs/threading.md says.

#include "builtDriver.h"
#include "threadedHost.h"

#include <gtest/gtest.h>

namespace {

enum { ROUNDS = 400, WORDS = 8, TRANSFERS = 25, SETTLING_EXCHANGES = 100 };

void ignore(int, int, QString&, int) {}

// The callback is a plain function, so what it knows of the test is global.
ThreadedHost* told;
int timesTold;
int timesBusy;

void takeMutexAndRead(int, int station, QString& name, int address)
{
    ++timesTold;
    if (told->mutex.tryLock())
        told->mutex.unlock();
    else
        ++timesBusy;
    unsigned char value[2];
    driver().getData(station, name, address, 1, value);
}

/// In turn what a host may call while writes and reads go on.
void planOrSet(ThreadedHost& host, int round)
{
    switch (round % 5) {
    case 0:
        return host.poll();
    case 1:
        return host.readOnce(3000 + round % WORDS);
    case 2:
        return host.setRecipe();
    case 3:
        return host.setPage();
    default:
        return driver().setAddrValueChangeCallBack(ignore);
    }
}

void fill(ThreadedHost& host, int round)
{
    for (size_t i = 0; i < host.recipe.size(); ++i)
        host.recipe[i] = static_cast<unsigned char>((unsigned(round) * 31u + unsigned(i)) & 0xFFu);
}

void transfer(ThreadedHost& host, RecipeFlag flag)
{
    host.raise(flag);
    while (host.isRaised(flag))
        std::this_thread::yield();
}

} // namespace

TEST(SerialisedCalls, OfSeveralThreadsLoseNoWrite)
{
    ThreadedHost host(ignore);
    std::mutex serial;
    {
        RepeatingThread communication([&] {
            const std::lock_guard<std::mutex> alone(serial);
            host.exchange();
        });
        RepeatingThread planning([&, round = 0]() mutable {
            const std::lock_guard<std::mutex> alone(serial);
            planOrSet(host, ++round);
        });
        for (int i = 0; i < ROUNDS; ++i) {
            const std::lock_guard<std::mutex> alone(serial);
            host.write(3000 + i % WORDS, i);
            EXPECT_EQ(i, host.read(3000 + i % WORDS));
            planOrSet(host, i);
        }
        communication.await(ROUNDS);
        planning.await(ROUNDS);
    }
    for (int i = 0; i < SETTLING_EXCHANGES; ++i)
        host.exchange();
    for (int i = ROUNDS - WORDS; i < ROUNDS; ++i) {
        EXPECT_EQ(i, host.plc.element(1, "MW", 3000 + i % WORDS));
        EXPECT_EQ(i, host.read(3000 + i % WORDS));
    }
}

TEST(SerialisedCalls, MayStartTheDriverAnewOnAnyThread)
{
    ThreadedHost host(ignore);
    std::mutex serial;
    RepeatingThread communication([&] {
        const std::lock_guard<std::mutex> alone(serial);
        host.exchange();
    });
    for (int i = 0; i < TRANSFERS; ++i) {
        const std::lock_guard<std::mutex> alone(serial);
        host.start();
        host.poll();
        EXPECT_EQ(0, host.read(3000));
    }
    communication.await(ROUNDS);
}

TEST(RecipeFlags, MayBeRaisedByAnotherThreadUnderTheHostsMutexAlone)
{
    ThreadedHost host(ignore);
    host.setRecipe();
    RepeatingThread communication([&] { host.exchange(); });
    for (int round = 1; round <= TRANSFERS; ++round) {
        // The buffer is this thread's again once the flag has been seen down.
        fill(host, round);
        const std::vector<unsigned char> sent = host.recipe;
        transfer(host, RECIPE_DOWNLOAD_FLAG);
        fill(host, 0);
        transfer(host, RECIPE_UPLOAD_FLAG);
        EXPECT_EQ(sent, host.recipe);
    }
}

TEST(Callback, MayTakeTheHostsMutexAndReadValues)
{
    ThreadedHost host(takeMutexAndRead);
    told = &host;
    timesTold = timesBusy = 0;
    host.setRecipe();
    host.write(3000, 7);                // a write just made
    host.plc.setElement(1, "IW", 0, 9); // a read with news
    host.readOnce(3002);                // the end of a one-shot read
    for (int i = 0; i < SETTLING_EXCHANGES; ++i)
        host.exchange();
    const int withoutRecipe = timesTold;
    EXPECT_GE(withoutRecipe, 3);
    host.raise(RECIPE_UPLOAD_FLAG); // each word of an upload
    while (host.isRaised(RECIPE_UPLOAD_FLAG))
        host.exchange();
    EXPECT_EQ(withoutRecipe + ThreadedHost::RECIPE_WORDS, timesTold);
    EXPECT_EQ(0, timesBusy);
}

TEST(Callback, RunsOnTheThreadOfTheCallThatTells)
{
    static std::thread::id tellingThread;
    ThreadedHost host([](int, int, QString&, int) { tellingThread = std::this_thread::get_id(); });
    std::thread::id writer;
    std::thread([&] {
        writer = std::this_thread::get_id();
        host.write(3000, 1);
    }).join();
    EXPECT_EQ(writer, tellingThread);
}
