// When a node that lost its session comes back to its brokers.

#include "jsonNodeRoom.h"

TEST_F(JsonNodeTest, ComesBackWithPausesThatGrowWhereItIsThrownOutAtOnce)
{
    for (const qint64 pauseMs : {1000, 2000, 4000}) {
        for (size_t server = 0; server < settings.servers.size(); ++server) {
            open();
            EXPECT_EQ(PlantStanding::BORN, node->standing().state);
            session.end("the broker closed the connection");
        }
        const int connects = session.connects;
        EXPECT_EQ(clock.steady() + pauseMs * 1000, node->turn());
        EXPECT_EQ(connects, session.connects);
        clock.passMs(pauseMs);
    }
}

TEST_F(JsonNodeTest, ComesBackAtOnceToABrokerThatKeptItForASecond)
{
    open();
    clock.passMs(1000);
    session.end("the broker closed the connection");
    node->turn();
    EXPECT_EQ(2, session.connects);
    EXPECT_EQ("mqtt://a:1883", session.server.text().toStdString());
}
