#include "session/startedDriver.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <thread>

// What the session lends to the driver.

namespace {

enum { ATTEMPTS = 3, GLANCES = 1000 };

// The driver's functions have no argument for the test's own data.
decltype(&intf_initProperty) realInitProperty = nullptr;
unsigned char* lentBlock = nullptr;
QMutex* lentMutex = nullptr;

int notedInitProperty(unsigned char* shared, int arg, unsigned char* rcpBuffer, int* status,
                      char* text, QMutex* mutex)
{
    lentBlock = shared;
    lentMutex = mutex;
    return realInitProperty(shared, arg, rcpBuffer, status, text, mutex);
}

} // namespace

class StartedDriverTest : public testing::Test
{
protected:
    StartedDriverTest()
    {
        realInitProperty = library.initProperty;
        library.initProperty = notedInitProperty;
        session.emplace(library, ATTEMPTS);
    }

    /// Runs the call in another thread while somebody else has the mutex.
    /// @return whether it waited for it
    template <typename Call> bool waitsForTheMutex(Call call)
    {
        std::atomic<bool> begun{false};
        std::atomic<bool> ended{false};
        lentMutex->lock();
        std::thread other([&] {
            begun = true;
            call();
            ended = true;
        });
        while (!begun)
            std::this_thread::yield();
        for (int i = 0; i < GLANCES && !ended; ++i)
            std::this_thread::yield();
        const bool waited = !ended;
        lentMutex->unlock();
        other.join();
        return waited;
    }

    DriverLibrary library{QString::fromLatin1(KAKB_DRIVER_FILE)};
    std::optional<StartedDriver> session;
};

TEST_F(StartedDriverTest, RaisesARecipesFlagUnderTheMutex)
{
    ASSERT_NE(nullptr, lentMutex);
    EXPECT_EQ(0, lentBlock[RECIPE_UPLOAD_FLAG]);
    EXPECT_TRUE(waitsForTheMutex([this] { session->raise(RECIPE_UPLOAD_FLAG); }));
    EXPECT_EQ(1, lentBlock[RECIPE_UPLOAD_FLAG]);
    EXPECT_EQ(0, lentBlock[RECIPE_DOWNLOAD_FLAG]);
}

TEST_F(StartedDriverTest, LooksAtARecipesFlagUnderTheMutex)
{
    EXPECT_TRUE(waitsForTheMutex([this] { session->isRaised(RECIPE_UPLOAD_FLAG); }));
}

TEST_F(StartedDriverTest, ClearsTheBufferOfTheRecipeBefore)
{
    enum { WORDS = 3 };
    session->setRecipe({}, QByteArray(2 * WORDS, 'x'));
    ASSERT_EQ(QByteArray(2 * WORDS, 'x'), session->recipeBytes(2 * WORDS));
    session->setRecipe({}, QByteArray(2, 'y'));
    EXPECT_EQ(QByteArray("yy\0\0\0\0", 2 * WORDS), session->recipeBytes(2 * WORDS));
}

TEST_F(StartedDriverTest, TakesBackWhatItLent)
{
    ASSERT_NE(nullptr, lentBlock);
    session.reset();
    EXPECT_EQ(nullptr, lentBlock);
    EXPECT_EQ(nullptr, lentMutex);
}
