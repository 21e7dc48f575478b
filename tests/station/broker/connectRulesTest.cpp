// The rules of Sparkplug about the packets CONNECT and DISCONNECT, each under its public name, as
// they stand on the wire.

#include "broker/drivenSession.h"

namespace {

/// The places of the CONNECT's bytes behind its type and its length.
enum { PROTOCOL = 2, LEVEL = 8, FLAGS = 9 };

enum { MQTT_3_1_1 = 4, CLEAN_SESSION = 0x02, RESERVED = 0x01 };

QByteArray connectOf(DrivenSession& driven)
{
    driven.open();
    return driven.peer.taken();
}

} // namespace

TEST(Sparkplug, principles_persistence_clean_session_311)
{
    DrivenSession driven;
    for (int session = 0; session < 2; ++session) {
        const QByteArray bytes = connectOf(driven);
        ASSERT_GT(bytes.size(), int(FLAGS));
        EXPECT_EQ(CLEAN_SESSION, bytes.at(FLAGS) & (CLEAN_SESSION | RESERVED));
        driven.peer.hangUp();
        driven.untilTold("ended");
        driven.told.clear();
    }
}

// Without version 5 of MQTT no session can expire later.
TEST(Sparkplug, principles_persistence_clean_session_50)
{
    DrivenSession driven;
    const QByteArray bytes = connectOf(driven);
    ASSERT_GT(bytes.size(), int(LEVEL));
    EXPECT_EQ(QByteArray("\0\4MQTT", 6), bytes.mid(PROTOCOL, 6));
    EXPECT_EQ(int(MQTT_3_1_1), bytes.at(LEVEL));
}

// Without version 5 of MQTT a DISCONNECT has no reason: it is two bytes.
TEST(Sparkplug, payloads_ndeath_will_message_publisher_disconnect_mqtt50)
{
    DrivenSession driven;
    const int before = int(connectOf(driven).size());
    driven.session.leave();
    driven.until([&] { return driven.peer.isClosed(); });
    EXPECT_EQ(QByteArray::fromHex("e000"), driven.peer.taken().mid(before));
}
