#include "events/recentMessages.h"

#include <gtest/gtest.h>

namespace {

const RecentMessages::Limits LIMITS = {3, 1000, 2000000};

SharedMessage sized(quint64 id, int bytes)
{
    return std::make_shared<const StreamMessage>(StreamMessage{id, QByteArray(bytes, 'x')});
}

} // namespace

TEST(StreamMessages, AreServerSentEvents)
{
    EXPECT_EQ(QByteArray("id: 7\nevent: beat\ndata: {\"time\":1}\n\n"),
              streamMessage(7, "beat", "{\"time\":1}")->text);
}

TEST(RecentMessages, GiveTheSameMessageToAll)
{
    RecentMessages recent(LIMITS);
    const SharedMessage message = sized(5, 10);
    recent.add(message, 0);
    EXPECT_EQ(message, recent.after(0));
    EXPECT_EQ(message, recent.after(4));
    EXPECT_EQ(nullptr, recent.after(5));
}

TEST(RecentMessages, GoUpById)
{
    RecentMessages recent(LIMITS);
    for (const quint64 id : {5u, 8u, 9u})
        recent.add(sized(id, 10), 0);
    EXPECT_EQ(8u, recent.after(5)->id);
    EXPECT_EQ(8u, recent.after(7)->id);
    EXPECT_EQ(9u, recent.after(8)->id);
}

TEST(RecentMessages, SayWhoMissedOne)
{
    RecentMessages recent(LIMITS);
    for (const quint64 id : {5u, 6u, 7u, 8u})
        recent.add(sized(id, 10), 0);
    EXPECT_TRUE(recent.isGone(4)); // 5 is the fourth newest
    EXPECT_FALSE(recent.isGone(5));
}

TEST(RecentMessages, KeepNoMoreBytesThanAllowed)
{
    RecentMessages recent(LIMITS);
    recent.add(sized(1, 600), 0);
    recent.add(sized(2, 600), 0);
    EXPECT_TRUE(recent.isGone(0));
    EXPECT_EQ(2u, recent.after(0)->id);
}

TEST(RecentMessages, KeepOneThatIsLargerThanAllBytes)
{
    RecentMessages recent(LIMITS);
    recent.add(sized(1, 5000), 0);
    ASSERT_NE(nullptr, recent.after(0));
    recent.add(sized(2, 10), 0);
    EXPECT_TRUE(recent.isGone(0));
}

TEST(RecentMessages, ForgetTheOld)
{
    RecentMessages recent(LIMITS);
    recent.add(sized(1, 10), 0);
    recent.forget(2000000);
    EXPECT_FALSE(recent.isGone(0));
    recent.forget(2000001);
    EXPECT_TRUE(recent.isGone(0));
    EXPECT_EQ(nullptr, recent.after(0));
}
