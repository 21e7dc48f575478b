#include "machine/driverCopy.h"

#include "plan/recipePlan.h"
#include "session/startedDriver.h"

#include <gtest/gtest.h>

#include <QTemporaryFile>

#include <set>

// Copies of the driver in one process, each with a state of its own.

namespace {

enum { NUMBER = 3010, ATTEMPTS = 3, MANY = 200 };

const QString FILE_NAME = QString::fromUtf8(KAKB_DRIVER_FILE);

/// What the cache of the copy holds for a word that was written and is not confirmed yet.
QByteArray wordOf(const DriverLibrary& copy)
{
    QByteArray bytes(2, 0);
    copy.getData(1, QLatin1String("MW"), NUMBER, 1, reinterpret_cast<unsigned char*>(bytes.data()));
    return bytes;
}

Tag wordAt(int number)
{
    Tag tag;
    tag.area = QLatin1String("MW");
    tag.number = number;
    return tag;
}

void startRecipe(StartedDriver& driver, const RecipePlan& plan)
{
    driver.setRecipe(plan.downloadRecords(), QByteArray(plan.bufferBytes(), 'x'));
    driver.raise(RECIPE_DOWNLOAD_FLAG);
}

/// Confirms the write of one word: the PLC sends the request back.
int answer(StartedDriver& driver, const FRAME_PRO& frame)
{
    QByteArray reply(reinterpret_cast<const char*>(frame.sendBuf), frame.sendLen);
    QString errorText;
    return driver.dealRcvFrame(reply, errorText);
}

} // namespace

TEST(DriverCopy, HasAStateOfItsOwn)
{
    const auto first = loadDriverCopy(FILE_NAME);
    const auto second = loadDriverCopy(FILE_NAME);
    EXPECT_NE(first->getSendFrame, second->getSendFrame);
    const StartedDriver one(*first, ATTEMPTS);
    const StartedDriver other(*second, ATTEMPTS);
    QByteArray seven("\x07\x00", 2);
    first->setData(1, QLatin1String("MW"), NUMBER, 1,
                   reinterpret_cast<unsigned char*>(seven.data()), 0);
    EXPECT_EQ(seven, wordOf(*first));
    EXPECT_EQ(QByteArray(2, 0), wordOf(*second));
}

TEST(DriverCopy, OfWhatIsNoDriverSaysWhy)
{
    EXPECT_THROW(loadDriverCopy(QLatin1String("/nowhere/driver.so")), DriverNotLoaded);
    QTemporaryFile text;
    ASSERT_TRUE(text.open());
    text.write("no library");
    text.close();
    EXPECT_THROW(loadDriverCopy(text.fileName()), DriverNotLoaded);
}

TEST(DriverCopies, AreAsManyAsThereAreLinks)
{
    DriverCopies copies(FILE_NAME);
    std::set<decltype(DriverLibrary::getSendFrame)> functions;
    std::vector<std::shared_ptr<const DriverLibrary>> lent;
    for (int i = 0; i < MANY; ++i) {
        lent.push_back(copies.lend());
        functions.insert(lent.back()->getSendFrame);
    }
    EXPECT_EQ(size_t(MANY), functions.size());
}

TEST(DriverCopies, AreLentAgainWhenTheyHaveComeBack)
{
    DriverCopies copies(FILE_NAME);
    auto first = copies.lend();
    const auto function = first->getSendFrame;
    EXPECT_NE(function, copies.lend()->getSendFrame);
    first.reset();
    EXPECT_EQ(function, copies.lend()->getSendFrame);
}

TEST(DriverCopies, MayComeBackBehindTheirShelf)
{
    std::shared_ptr<const DriverLibrary> kept;
    {
        DriverCopies copies(FILE_NAME);
        kept = copies.lend();
    }
    EXPECT_EQ(QByteArray(2, 0), wordOf(*kept));
}

// A driver keeps its place in a recipe: the next link's recipe would begin in the middle, and be
// confirmed without its first block.
TEST(DriverCopies, HaveNothingLeftOfTheRecipeOfTheLinkBefore)
{
    const RecipePlan plan({wordAt(NUMBER), wordAt(NUMBER + 10)}, StartedDriver::LINK_NUMBER);
    DriverCopies copies(FILE_NAME);
    FRAME_PRO frame;
    {
        const auto copy = copies.lend();
        StartedDriver driver(*copy, ATTEMPTS);
        startRecipe(driver, plan);
        ASSERT_TRUE(driver.nextRequest(&frame));
        ASSERT_EQ(int(NUMBER), frame.var.addr);
        ASSERT_EQ(REPLY_ACCEPTED, answer(driver, frame));
        ASSERT_TRUE(driver.nextRequest(&frame));
        ASSERT_EQ(NUMBER + 10, frame.var.addr);
    }
    const auto copy = copies.lend();
    StartedDriver driver(*copy, ATTEMPTS);
    startRecipe(driver, plan);
    ASSERT_TRUE(driver.nextRequest(&frame));
    EXPECT_EQ(int(NUMBER), frame.var.addr);
}

TEST(DriverCopies, HaveNothingLeftOfTheWritesOfTheLinkBefore)
{
    DriverCopies copies(FILE_NAME);
    FRAME_PRO frame;
    {
        const auto copy = copies.lend();
        StartedDriver driver(*copy, ATTEMPTS);
        driver.queueWrite(1, QLatin1String("MW"), NUMBER, QByteArray(2, 'x'));
        ASSERT_TRUE(driver.nextRequest(&frame));
    }
    const auto copy = copies.lend();
    StartedDriver driver(*copy, ATTEMPTS);
    EXPECT_FALSE(driver.nextRequest(&frame));
    EXPECT_EQ(QByteArray(2, 0), wordOf(*copy));
}
