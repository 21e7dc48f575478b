#include "broker/drivenSession.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <map>

// What stands on the wire, byte by byte, and what a broker may answer. The packets of MQTT 3.1.1
// stand in hexadecimal digits: type, length, and what the tests name.

namespace {

enum { FLAGS = 9, WILL_RETAINED = 0x20 }; ///< of the CONNECT

const char* const ACCEPTED = "20020000"; ///< CONNACK

BrokerMessage message(int qos)
{
    return {QLatin1String("a"), "v", qos, false};
}

/// The bytes of a CONNECT, all of them.
QByteArray connectPacket(const BrokerMessage& will)
{
    DrivenSession driven;
    driven.session.connect(driven.address(), will);
    driven.until([&] { return driven.peer.taken().endsWith(will.payload); });
    return driven.peer.taken();
}

template <typename Value> Value socketOption(const DrivenSession& driven, int option)
{
    Value value{};
    socklen_t size = sizeof value;
    EXPECT_EQ(0, getsockopt(driven.session.awaited().fd, IPPROTO_TCP, option, &value, &size));
    return value;
}

// The numbers are 16 bits wide, and messages with QoS 0 take them as well.
class SessionNumbers : public testing::Test
{
protected:
    SessionNumbers()
    {
        driven.open();
        first = driven.session.publish(message(1));
        driven.until([&] { return driven.peer.taken().endsWith('v'); });
    }

    /// The broker's yes to a message with the number of the first one.
    void acknowledge()
    {
        driven.peer.send(QByteArray::fromHex("40020001"));
    }

    /// The next message has the number of the first one again.
    void useAllNumbers()
    {
        enum { NUMBERS = 65535 };
        for (int i = 1; i < NUMBERS; ++i) {
            ASSERT_NE(0, driven.session.publish(message(0)));
            driven.until([&] { return driven.session.isDrained(); });
        }
    }

    QByteArray delivered(int request) const
    {
        return "delivered " + QByteArray::number(request);
    }

    DrivenSession driven;
    int first = 0;
};

} // namespace

TEST(SessionPackets, OnlyAWillThatIsRetainedIsMarkedAsRetained)
{
    BrokerMessage will = DrivenSession::will();
    EXPECT_EQ(0, connectPacket(will).at(FLAGS) & WILL_RETAINED);
    will.isRetained = true;
    EXPECT_NE(0, connectPacket(will).at(FLAGS) & WILL_RETAINED);
}

TEST(SessionPackets, AMessageHasItsRetainFlagAndItsQos)
{
    const std::map<QByteArray, BrokerMessage> expected{
        {"30040001"
         "6176",
         message(0)},
        {"31040001"
         "6176",
         {QLatin1String("a"), "v", 0, true}},
        {"32060001"
         "6100"
         "0176",
         message(1)},
    };
    for (const auto& [packet, sent] : expected) {
        DrivenSession driven;
        driven.open();
        const int before = int(driven.peer.taken().size());
        driven.session.publish(sent);
        driven.until([&] { return driven.peer.taken().endsWith('v'); });
        EXPECT_EQ(packet, driven.peer.taken().mid(before).toHex());
    }
}

TEST(SessionPackets, APacketMayComeByteByByte)
{
    DrivenSession driven;
    driven.session.connect(driven.address(), DrivenSession::will());
    driven.until([&] { return !driven.peer.taken().isEmpty(); });
    const QByteArray packets = QByteArray::fromHex(ACCEPTED) + QByteArray::fromHex("300400016276");
    for (int at = 0; at < packets.size(); ++at) {
        EXPECT_EQ(at >= 4 ? 1 : 0, driven.told.size()) << at;
        driven.peer.send(packets.mid(at, 1));
        driven.until([&] { return (driven.session.awaited().events & POLLIN) != 0; });
        if (at == 3) driven.untilTold("connected");
        driven.session.drive(POLLIN);
    }
    driven.untilTold("received b v");
}

TEST(SessionPackets, SeveralPacketsMayComeAtOnce)
{
    DrivenSession driven;
    driven.session.connect(driven.address(), DrivenSession::will());
    driven.until([&] { return !driven.peer.taken().isEmpty(); });
    driven.peer.send(QByteArray::fromHex(ACCEPTED) + QByteArray::fromHex("300400016276") +
                     QByteArray::fromHex("300400016376"));
    driven.untilTold("received c");
    EXPECT_EQ((QByteArrayList{"connected", "received b v", "received c v"}), driven.told);
}

TEST(SessionPackets, AMessageThatAsksForItIsAcknowledgedOnceAndTold)
{
    DrivenSession driven;
    driven.open();
    driven.peer.send(QByteArray::fromHex("3206000162000976")); // QoS 1, number 9
    driven.untilTold("received b v");
    driven.until([&] { return driven.peer.taken().endsWith(QByteArray::fromHex("40020009")); });
    EXPECT_EQ(1, driven.peer.taken().count(QByteArray::fromHex("40020009")));
}

// Whether a broker had sent a message before says nothing of what it is.
TEST(SessionPackets, AMessageThatIsSentAgainIsToldAsAnyOther)
{
    DrivenSession driven;
    driven.open();
    driven.peer.send(QByteArray::fromHex("3a06000162000976")); // DUP
    driven.untilTold("received b v");
    EXPECT_EQ(2, driven.told.size());
}

TEST(SessionPackets, AnAcknowledgementOfWhatWasNotSentProvesNothing)
{
    DrivenSession driven;
    driven.open();
    const int request = driven.session.publish(message(1));
    driven.until([&] { return driven.peer.taken().endsWith('v'); });
    const QByteArray number = driven.peer.taken().right(3).left(2);
    driven.peer.send(QByteArray::fromHex("40020309")); // another number
    driven.peer.send(QByteArray::fromHex("4002") + number);
    driven.peer.send(QByteArray::fromHex("4002") + number); // again
    driven.peer.send(QByteArray::fromHex("300400016276"));
    driven.untilTold("received");
    EXPECT_EQ(
        (QByteArrayList{"connected", "delivered " + QByteArray::number(request), "received b v"}),
        driven.told);
}

TEST(SessionPackets, AGrantOfWhatWasNotAskedForIsNone)
{
    DrivenSession driven;
    driven.open();
    const int request = driven.session.subscribe({QLatin1String("a")});
    driven.until([&] { return driven.peer.taken().endsWith(QByteArray::fromHex("00016101")); });
    const QByteArray number = driven.peer.taken().right(6).left(2);
    driven.peer.send(QByteArray::fromHex("9003030901")); // another number
    driven.peer.send(QByteArray::fromHex("9003") + number + '\1');
    driven.peer.send(QByteArray::fromHex("9003") + number + '\x80'); // again
    driven.peer.send(QByteArray::fromHex("300400016276"));
    driven.untilTold("received");
    EXPECT_EQ((QByteArrayList{"connected", "subscribed " + QByteArray::number(request) + " yes",
                              "received b v"}),
              driven.told);
}

TEST(SessionPackets, AGrantOfFewerTopicsThanAskedForIsARefusal)
{
    DrivenSession driven;
    driven.open();
    const int request = driven.session.subscribe({QLatin1String("a"), QLatin1String("b")});
    driven.until([&] { return driven.peer.taken().endsWith(QByteArray::fromHex("00016201")); });
    const QByteArray number = driven.peer.taken().right(10).left(2);
    driven.peer.send(QByteArray::fromHex("9003") + number + '\1');
    driven.untilTold("subscribed");
    EXPECT_EQ("subscribed " + QByteArray::number(request) + " no", driven.told.at(1));
}

TEST(SessionPackets, EachRefusalIsToldInWordsAndEndsTheSession)
{
    const std::map<QByteArray, const char*> refusals{
        {"20020001", "unacceptable protocol version"},
        {"20020002", "identifier rejected"},
        {"20020003", "broker unavailable"},
        {"20020004", "bad user name or password"},
        {"20020005", "not authorised"},
        {"200200ff", "unknown reason"},
    };
    for (const auto& [packet, words] : refusals) {
        DrivenSession driven;
        driven.session.connect(driven.address(), DrivenSession::will());
        driven.until([&] { return !driven.peer.taken().isEmpty(); });
        driven.peer.send(QByteArray::fromHex(packet));
        driven.untilTold("ended");
        EXPECT_TRUE(driven.hasTold("ended sent the broker says no: ")) << packet.data();
        EXPECT_TRUE(driven.hasTold(words)) << driven.told.join(' ').data();
        EXPECT_EQ(1, driven.told.size()) << "told once, and never connected";
        EXPECT_EQ(0, driven.session.publish(message(0)));
    }
}

TEST(SessionPackets, APeerThatDoesNotSpeakMqttEndsTheSession)
{
    // a length that never ends, a CONNECT, no type at all
    for (const char* const answer : {"30ffffffffff", "1000", "0000"}) {
        DrivenSession driven;
        driven.session.connect(driven.address(), DrivenSession::will());
        driven.until([&] { return !driven.peer.taken().isEmpty(); });
        driven.peer.send(QByteArray::fromHex(answer));
        driven.untilTold("ended sent the peer does not speak MQTT 3.1.1");
        EXPECT_EQ(1, driven.told.size());
    }
}

TEST(SessionPackets, NothingIsPublishedAheadOfTheBrokersYes)
{
    DrivenSession driven;
    driven.session.connect(driven.address(), DrivenSession::will());
    driven.until([&] { return driven.peer.taken().endsWith("17"); });
    const QByteArray sent = driven.peer.taken();
    EXPECT_EQ(0, driven.session.publish(message(1)));
    EXPECT_EQ(0, driven.session.subscribe({QLatin1String("a")}));
    driven.peer.send(QByteArray::fromHex(ACCEPTED));
    driven.untilTold("connected");
    EXPECT_EQ(sent.toHex(), driven.peer.taken().toHex());
}

/// A state must not overtake the message that clears its topic.
TEST(SessionPackets, MessagesKeepTheirOrderHoweverManyWaitForTheirAcknowledgement)
{
    enum { WAITING = 3000, BYTES = 8 }; ///< of each: head, length, topic "q", number, payload
    DrivenSession driven;
    driven.open();
    const int before = int(driven.peer.taken().size());
    for (int i = 0; i < WAITING; ++i)
        driven.session.publish({QLatin1String("q"), "v", 1, false});
    driven.session.publish({QLatin1String("last"), "v", 0, false});
    driven.until([&] { return driven.peer.taken().contains("last"); });
    EXPECT_EQ(before + WAITING * BYTES + 2, driven.peer.taken().indexOf(QByteArray("\0\4last", 6)));
}

/// Without it the broker would take the station for anybody.
TEST(SessionPackets, AUserThatNoConnectCanHoldIsNotLeftOut)
{
    ClientSettings settings = DrivenSession::named();
    settings.user = QString(QChar(0xFDD0));
    settings.password = "word";
    DrivenSession driven(settings);
    driven.session.connect(driven.address(), DrivenSession::will());
    driven.until([&] { return !driven.told.isEmpty() || !driven.peer.taken().isEmpty(); });
    EXPECT_EQ("ended unsent user: Malformed UTF-8", driven.told.value(0).toStdString());
}

TEST(SessionPackets, AClientIdThatNoConnectCanHoldIsNamedAsTheReason)
{
    ClientSettings settings = DrivenSession::named();
    settings.clientId = QString(QChar(0xFDD0));
    DrivenSession driven(settings);
    driven.session.connect(driven.address(), DrivenSession::will());
    driven.untilTold("ended unsent ");
    EXPECT_EQ("ended unsent no client can have this client id", driven.told.value(0).toStdString());
}

/// What the library does not take would be missing, and a later mark would prove it all the same.
TEST(SessionPackets, AMessageThatTheLibraryDoesNotTakeEndsTheSession)
{
    for (const int qos : {0, 1}) {
        DrivenSession driven;
        driven.open();
        EXPECT_EQ(0, driven.session.publish({QLatin1String("a/+"), "v", qos, false}));
        driven.untilTold("ended sent ");
        EXPECT_EQ(0, driven.session.publish({QLatin1String("a"), "v", qos, false}));
    }
}

TEST(SessionPackets, ASubscriptionThatTheLibraryDoesNotTakeEndsTheSession)
{
    DrivenSession driven;
    driven.open();
    EXPECT_EQ(0, driven.session.subscribe({QLatin1String("a"), QLatin1String("a/#/b")}));
    driven.untilTold("ended sent ");
}

TEST(SessionPackets, ABrokerThatHangsUpAtOnceEndsTheSessionOnce)
{
    DrivenSession driven;
    driven.session.connect(driven.address(), DrivenSession::will());
    driven.isPeerReading = false;
    driven.until([&] { return driven.peer.hasClient(); });
    driven.peer.hangUp();
    driven.untilTold("ended ");
    driven.session.drive(0);
    EXPECT_EQ(1, driven.told.size());
    EXPECT_LT(driven.session.awaited().fd, 0);
}

TEST(SessionPackets, WhetherAConnectWasSentIsKnownBehindItsEnd)
{
    DrivenSession driven;
    driven.session.connect(driven.address(), DrivenSession::will());
    EXPECT_FALSE(driven.session.isConnectSent());
    driven.until([&] { return !driven.peer.taken().isEmpty(); });
    driven.session.drop();
    EXPECT_TRUE(driven.session.isConnectSent());
    driven.session.connect(driven.address(), DrivenSession::will());
    EXPECT_FALSE(driven.session.isConnectSent()) << "of the next one";
}

TEST_F(SessionNumbers, ABrokerThatNeverAcknowledgesIsLeftBeforeANumberMeansTwoMessages)
{
    useAllNumbers();
    EXPECT_EQ(QByteArrayList{"connected"}, driven.told);
    driven.session.publish(message(1));
    driven.untilTold("ended sent the broker acknowledges nothing");
}

TEST_F(SessionNumbers, ANumberThatWasAcknowledgedIsUsedAgain)
{
    acknowledge();
    driven.untilTold("delivered");
    useAllNumbers();
    const int again = driven.session.publish(message(1));
    acknowledge();
    driven.until([&] { return driven.told.size() > 2; });
    EXPECT_EQ((QByteArrayList{"connected", delivered(first), delivered(again)}), driven.told);
}

TEST_F(SessionNumbers, AnAcknowledgementIsHeardWhileTheBrokerTakesNothing)
{
    enum { PIECE = 1000000, PIECES = 40 }; ///< more than systems take
    driven.isPeerReading = false;
    for (int i = 0; i < PIECES; ++i)
        ASSERT_NE(0,
                  driven.session.publish({QLatin1String("a"), QByteArray(PIECE, 'v'), 0, false}));
    acknowledge();
    driven.untilTold("delivered");
    EXPECT_EQ(delivered(first), driven.told.last());
    EXPECT_FALSE(driven.session.isDrained());
}

TEST(SessionPackets, AChangeDoesNotWaitForTheNextOne)
{
    DrivenSession driven;
    driven.open();
    EXPECT_NE(0, socketOption<int>(driven, TCP_NODELAY));
}

// The broker ends a silent session behind one and a half keep-alives: one until the ping, half for
// its acknowledgement.
TEST(SessionPackets, AVanishedPeerIsNoticedWithinOneAndAHalfKeepAlives)
{
    ClientSettings settings = DrivenSession::named();
    settings.keepAliveS = 20;
    DrivenSession driven(settings);
    driven.open();
    EXPECT_EQ(10000U, socketOption<unsigned int>(driven, TCP_USER_TIMEOUT));
}
