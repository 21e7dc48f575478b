#include "broker/serverWalk.h"

#include <gtest/gtest.h>

namespace {

enum HostStands { HOST_IS_THERE, HOST_IS_OFFLINE };

/// A walk over servers a, b, c ..., which tells each end as "NEXT PAUSE".
class Walk
{
public:
    explicit Walk(int count) : m_walk(servers(count)) {}

    std::string at() const
    {
        return m_walk.server().host.toStdString();
    }

    void good()
    {
        m_walk.wasGood();
    }

    std::string ended(HostStands host = HOST_IS_THERE)
    {
        const qint64 pause = m_walk.ended(host == HOST_IS_OFFLINE);
        return at() + " " + std::to_string(pause);
    }

private:
    static std::vector<BrokerAddress> servers(int count)
    {
        std::vector<BrokerAddress> all(static_cast<size_t>(count));
        for (int i = 0; i < count; ++i)
            all[size_t(i)].host = QString(QChar('a' + i));
        return all;
    }

    ServerWalk m_walk;
};

} // namespace

TEST(ServerWalk, BeginsWithTheFirstServerOfTheList)
{
    EXPECT_EQ("a", Walk(3).at());
}

TEST(ServerWalk, TriesTheWholeListBeforeItPauses)
{
    Walk walk(3);
    EXPECT_EQ("b 0", walk.ended());
    EXPECT_EQ("c 0", walk.ended());
    EXPECT_EQ("a 1000", walk.ended());
    EXPECT_EQ("b 0", walk.ended());
    EXPECT_EQ("c 0", walk.ended());
    EXPECT_EQ("a 2000", walk.ended());
}

TEST(ServerWalk, PausesGrowToHalfAMinute)
{
    Walk walk(1);
    for (const char* const next :
         {"a 1000", "a 2000", "a 4000", "a 8000", "a 16000", "a 30000", "a 30000", "a 30000"})
        EXPECT_EQ(next, walk.ended());
}

TEST(ServerWalk, AGoodSessionEndsTheGrowthAndItsServerIsTriedFirst)
{
    Walk walk(2);
    for (int i = 0; i < 5; ++i)
        walk.ended();
    ASSERT_EQ("b", walk.at());
    walk.good();
    EXPECT_EQ("b 0", walk.ended());
    EXPECT_EQ("a 0", walk.ended());
    EXPECT_EQ("b 1000", walk.ended());
}

TEST(ServerWalk, EachGoodSessionCountsOnce)
{
    Walk walk(1);
    walk.good();
    EXPECT_EQ("a 0", walk.ended());
    EXPECT_EQ("a 1000", walk.ended());
}

TEST(ServerWalk, AServerWhosePrimaryHostIsOfflineIsLeftThoughItsSessionWasGood)
{
    Walk walk(3);
    walk.good();
    EXPECT_EQ("b 0", walk.ended(HOST_IS_OFFLINE));
    walk.good();
    EXPECT_EQ("c 0", walk.ended(HOST_IS_OFFLINE));
}

TEST(ServerWalk, PausesGrowWhenThePrimaryHostIsOfflineEverywhere)
{
    Walk walk(2);
    EXPECT_EQ("b 0", walk.ended(HOST_IS_OFFLINE));
    EXPECT_EQ("a 1000", walk.ended(HOST_IS_OFFLINE));
    EXPECT_EQ("b 0", walk.ended(HOST_IS_OFFLINE));
    EXPECT_EQ("a 2000", walk.ended(HOST_IS_OFFLINE));
}
