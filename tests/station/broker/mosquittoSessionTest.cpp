#include "broker/drivenSession.h"

#include <future>

namespace {

/// A PUBLISH with QoS 0, as the broker sends it.
QByteArray publish(const QByteArray& topic, const QByteArray& payload, bool isRetained = false)
{
    const QByteArray rest =
        QByteArray(1, '\0') + QByteArray(1, char(topic.size())) + topic + payload;
    return QByteArray(1, isRetained ? '\x31' : '\x30') + QByteArray(1, char(rest.size())) + rest;
}

BrokerMessage value(int size, int qos = 0)
{
    return {QLatin1String("a"), QByteArray(size, 'v'), qos, false};
}

} // namespace

// The packets of MQTT 3.1.1 stand in hexadecimal digits: type, length, and what the tests name.

TEST(MosquittoSession, ConnectsCleanlyWithTheWillTheUserAndTheKeepAlive)
{
    ClientSettings settings = DrivenSession::named();
    settings.user = QLatin1String("me");
    settings.password = "word";
    settings.keepAliveS = 300;
    DrivenSession driven(settings);
    driven.session.connect(driven.address(), DrivenSession::will());
    driven.until([&] { return driven.peer.taken().size() >= 46; });
    const QByteArray expected = QByteArray::fromHex("102c"
                                                    "00044d515454" // MQTT
                                                    "04"           // 3.1.1
                                                    "ce" // user, password, will QoS 1, clean
                                                    "012c") +
                                QByteArray("\0\5press\0\13plant/death\0\00217\0\2me\0\4word", 34);
    EXPECT_EQ(expected.toHex(' '), driven.peer.taken().toHex(' '));
}

TEST(MosquittoSession, ARefusedTcpConnectionSendsNoConnect)
{
    DrivenSession driven;
    BrokerAddress nobody = driven.address();
    {
        const BarePeer gone;
        nobody.port = gone.port();
    }
    driven.session.connect(nobody, DrivenSession::will());
    driven.untilTold("ended");
    EXPECT_EQ(QByteArrayList{"ended unsent Connection refused"}, driven.told);
}

TEST(MosquittoSession, ANameWithoutAnAddressSendsNoConnect)
{
    DrivenSession driven;
    driven.session.connect(driven.address("nowhere.invalid"), DrivenSession::will());
    driven.untilTold("ended");
    EXPECT_TRUE(driven.hasTold("ended unsent the name \"nowhere.invalid\" has no address: "));
    driven.session.drive(0);
    EXPECT_EQ(1, driven.told.size()) << "told once";
}

TEST(MosquittoSession, ABrokerThatHangsUpBehindTheConnectMayHaveTakenIt)
{
    DrivenSession driven;
    driven.session.connect(driven.address(), DrivenSession::will());
    driven.until([&] { return !driven.peer.taken().isEmpty(); });
    EXPECT_TRUE(driven.session.isConnectSent());
    driven.peer.hangUp();
    driven.untilTold("ended sent ");
    EXPECT_FALSE(driven.hasTold("connected"));
}

TEST(MosquittoSession, ARefusalIsToldInWords)
{
    DrivenSession driven;
    driven.session.connect(driven.address(), DrivenSession::will());
    driven.until([&] { return !driven.peer.taken().isEmpty(); });
    driven.peer.send(QByteArray::fromHex("20020005"));
    driven.untilTold("ended");
    EXPECT_TRUE(driven.hasTold("ended sent the broker says no: ")) << driven.told.join('\n').data();
    EXPECT_TRUE(driven.hasTold("not authorised"));
}

TEST(MosquittoSession, NoConnectLeavesBeforeTlsIsDone)
{
    DrivenSession driven;
    BrokerAddress encrypted = driven.address();
    encrypted.isEncrypted = true;
    driven.session.connect(encrypted, DrivenSession::will());
    driven.until([&] { return !driven.peer.taken().isEmpty(); });
    EXPECT_EQ('\x16', driven.peer.taken().at(0)) << "a handshake of TLS";
    EXPECT_FALSE(driven.session.isConnectSent());
    driven.peer.hangUp();
    driven.untilTold("ended unsent ");
}

TEST(MosquittoSession, APeerThatDoesNotSpeakTlsIsToldFromABroker)
{
    DrivenSession driven;
    BrokerAddress encrypted = driven.address();
    encrypted.isEncrypted = true;
    driven.session.connect(encrypted, DrivenSession::will());
    driven.until([&] { return !driven.peer.taken().isEmpty(); });
    driven.peer.send("HTTP/1.1 400 Bad Request\r\n");
    driven.untilTold("ended unsent ");
    EXPECT_TRUE(driven.hasTold("wrong version number")) << driven.told.join(' ').data();
}

TEST(MosquittoSession, AFileThatTlsCannotReadIsNamed)
{
    ClientSettings settings = DrivenSession::named();
    settings.tls.ca = QLatin1String("/nowhere/ca.pem");
    DrivenSession driven(settings);
    BrokerAddress encrypted = driven.address();
    encrypted.isEncrypted = true;
    driven.session.connect(encrypted, DrivenSession::will());
    driven.untilTold("ended unsent /nowhere/ca.pem: ");
}

TEST(MosquittoSession, TheNextAddressOfANameIsTriedWhenOneRefuses)
{
    const auto twoAddresses = [](const QByteArray&) {
        return HostLookup::Found{{QLatin1String("127.0.0.2"), QLatin1String("127.0.0.1")},
                                 QString()};
    };
    DrivenSession driven(DrivenSession::named(),
                         twoAddresses); // the peer listens on the second one
    driven.session.connect(driven.address("plant"), DrivenSession::will());
    driven.until([&] { return !driven.peer.taken().isEmpty(); });
    EXPECT_TRUE(driven.told.isEmpty()) << driven.told.join(' ').data();
}

TEST(MosquittoSession, ANameWhoseAddressesAllRefuseSendsNoConnect)
{
    const auto twoAddresses = [](const QByteArray&) {
        return HostLookup::Found{{QLatin1String("127.0.0.2"), QLatin1String("127.0.0.3")},
                                 QString()};
    };
    DrivenSession driven(DrivenSession::named(), twoAddresses);
    driven.session.connect(driven.address("plant"), DrivenSession::will());
    driven.untilTold("ended");
    EXPECT_EQ(QByteArrayList{"ended unsent Connection refused"}, driven.told);
}

TEST(MosquittoSession, ALookupThatTakesForEverIsGivenUp)
{
    std::promise<void> end;
    const auto waiting = [answer = end.get_future().share()](const QByteArray&) {
        answer.wait();
        return HostLookup::Found();
    };
    DrivenSession driven(DrivenSession::named(), waiting);
    driven.session.connect(driven.address("plant"), DrivenSession::will());
    driven.session.drive(0);
    driven.session.drop();
    EXPECT_FALSE(driven.session.isConnectSent());
    EXPECT_LT(driven.session.awaited().fd, 0);
    end.set_value();
}

TEST(MosquittoSession, SubscriptionsAreGrantedAllOrNot)
{
    DrivenSession driven;
    driven.open();
    const QStringList topics{QLatin1String("a"), QLatin1String("b/+")};
    const int first = driven.session.subscribe(topics);
    const int second = driven.session.subscribe(topics);
    const QByteArray packet = QByteArray::fromHex("820c000100016101") + // a, QoS 1
                              QByteArray::fromHex("0003622f2b01");      // b/+, QoS 1
    driven.until(
        [&] { return driven.peer.taken().endsWith(QByteArray(packet).replace(3, 1, "\2")); });
    EXPECT_TRUE(driven.peer.taken().contains(packet));
    driven.peer.send(QByteArray::fromHex("9004000201"
                                         "80")); // one is refused
    driven.peer.send(QByteArray::fromHex("9004000101"
                                         "00")); // QoS 0 is granted, too
    driven.until([&] { return driven.told.size() == 3; });
    EXPECT_EQ("subscribed " + QByteArray::number(second) + " no", driven.told.at(1));
    EXPECT_EQ("subscribed " + QByteArray::number(first) + " yes", driven.told.at(2));
}

TEST(MosquittoSession, OnlyTheBrokersAcknowledgementIsADelivery)
{
    DrivenSession driven;
    driven.open();
    EXPECT_NE(0, driven.session.publish(value(1)));
    const int marked = driven.session.publish(value(2, 1));
    driven.until([&] { return driven.peer.taken().endsWith("vv"); });
    EXPECT_EQ(1, driven.told.size());
    const QByteArray number = driven.peer.taken().right(4).left(2);
    driven.peer.send(QByteArray::fromHex("4002") + number);
    driven.untilTold("delivered");
    EXPECT_EQ("delivered " + QByteArray::number(marked), driven.told.at(1));
}

TEST(MosquittoSession, AMessageWaitsForNoAcknowledgementOfOthers)
{
    enum { MESSAGES = 100 };
    DrivenSession driven;
    driven.open();
    for (int i = 0; i < MESSAGES; ++i)
        driven.session.publish(value(1, 1));
    driven.session.publish({QLatin1String("last"), QByteArray(), 0, false});
    driven.until([&] { return driven.peer.taken().endsWith("last"); });
    EXPECT_EQ(MESSAGES, driven.peer.taken().count(QByteArray::fromHex("3206000161")));
}

// The library numbers what has QoS 0 with the same 16 bits, and tells when it was written.
TEST(MosquittoSession, AMessageWithoutAcknowledgementIsNoProofForAnOlderOneOfItsNumber)
{
    enum { NUMBERS = 65535 };
    DrivenSession driven;
    driven.open();
    driven.session.publish(value(2, 1));
    for (int i = 0; i < NUMBERS + 5; ++i) {
        driven.session.publish(value(1));
        driven.until([&] { return driven.session.isDrained(); });
    }
    driven.session.drive(0); // tells what is to be told
    EXPECT_EQ(1, driven.told.size()) << driven.told.last().toStdString();
}

TEST(MosquittoSession, WhatThePeerDoesNotTakeIsNotDrained)
{
    enum { PIECE = 1000000 };
    DrivenSession driven;
    driven.open();
    driven.isPeerReading = false;
    while (driven.session.isDrained())
        ASSERT_NE(0, driven.session.publish(value(PIECE)));
    driven.isPeerReading = true;
    driven.until([&] { return driven.session.isDrained(); });
}

TEST(MosquittoSession, MessagesComeWithTheirFlag)
{
    DrivenSession driven;
    driven.open();
    driven.peer.send(publish("b/c", "new") + publish("b/d", "old", true));
    driven.untilTold("received b/d");
    EXPECT_EQ((QByteArrayList{"connected", "received b/c new", "received b/d old retained"}),
              driven.told);
}

/// The broker has given the session up, and what it had sent before is old.
TEST(MosquittoSession, WhatCameBeforeALongSleepOfTheMachineIsNotTold)
{
    ClientSettings settings = DrivenSession::named();
    settings.keepAliveS = 20;
    DrivenSession driven(settings);
    driven.open();
    driven.peer.send(publish("valve/set", "1"));
    pollfd awaited = driven.session.awaited();
    ASSERT_EQ(1, ::poll(&awaited, 1, 20000));
    driven.clock.sleepMs(30001);
    driven.session.drive(awaited.revents);
    EXPECT_EQ((QByteArrayList{"connected", "ended sent this station stood still for too long"}),
              driven.told);
}

TEST(MosquittoSession, AShortSleepOfTheMachineEndsNoSession)
{
    ClientSettings settings = DrivenSession::named();
    settings.keepAliveS = 20;
    DrivenSession driven(settings);
    driven.open();
    driven.peer.send(publish("valve/set", "1"));
    driven.clock.sleepMs(20000);
    driven.untilTold("received valve/set 1");
    EXPECT_FALSE(driven.hasTold("ended"));
}

TEST(MosquittoSession, ASleepBetweenTwoSessionsEndsNone)
{
    DrivenSession driven;
    driven.open();
    driven.session.leave();
    driven.peer.hangUp();
    driven.clock.sleepMs(3600000);
    driven.session.connect(driven.address(), DrivenSession::will());
    driven.until([&] { return driven.peer.hasClient(); });
    driven.peer.send(QByteArray::fromHex("20020000"));
    driven.until([&] { return driven.told.size() > 1; });
    EXPECT_EQ((QByteArrayList{"connected", "connected"}), driven.told);
}

TEST(MosquittoSession, NothingIsToldOfASessionThatWasDroppedMeanwhile)
{
    DrivenSession driven;
    driven.open();
    driven.react = [&](const QByteArray&) { driven.session.drop(); };
    driven.peer.send(publish("b", "1") + publish("b", "2"));
    driven.until([&] { return driven.peer.isClosed(); });
    EXPECT_EQ((QByteArrayList{"connected", "received b 1"}), driven.told);
    EXPECT_EQ(0, driven.session.publish(value(1)));
    EXPECT_FALSE(driven.peer.taken().endsWith(QByteArray::fromHex("e000"))) << "no DISCONNECT";
}

TEST(MosquittoSession, AnotherSessionMayBeginWhereOneEnds)
{
    DrivenSession driven;
    driven.open();
    driven.react = [&](const QByteArray& text) {
        if (text.startsWith("ended"))
            driven.session.connect(driven.address(), {QLatin1String("d"), "18", 1, false});
    };
    driven.peer.hangUp();
    driven.until([&] { return !driven.peer.taken().isEmpty(); });
    EXPECT_TRUE(driven.peer.taken().endsWith("18")) << "the will of the new session";
    driven.peer.send(QByteArray::fromHex("20020000"));
    driven.until([&] { return driven.told.count("connected") == 2; });
}

// What the library had not finished in the last session must not come ahead of anything in the
// next.
TEST(MosquittoSession, ANewSessionRepeatsNothingOfTheLastOne)
{
    DrivenSession driven;
    driven.open();
    driven.session.publish(value(7, 1));
    driven.until([&] { return driven.peer.taken().endsWith("vvvvvvv"); });
    driven.peer.hangUp();
    driven.untilTold("ended");
    driven.told.clear();
    driven.open();
    driven.session.publish(value(3));
    driven.until([&] { return driven.peer.taken().endsWith("vvv"); });
    EXPECT_FALSE(driven.peer.taken().contains("vvvv"));
}

TEST(MosquittoSession, LeavingSendsDisconnectBehindWhatWasPublished)
{
    DrivenSession driven;
    driven.open();
    driven.session.publish(value(3));
    driven.session.leave();
    driven.until([&] { return driven.peer.isClosed(); });
    EXPECT_TRUE(driven.peer.taken().endsWith("vvv" + QByteArray::fromHex("e000")));
    EXPECT_EQ(QByteArrayList{"connected"}, driven.told);
}
