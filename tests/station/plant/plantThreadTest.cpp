#include "broker/smallBroker.h"
#include "history/sampleIntake.h"
#include "machine/machineTest.h"
#include "plant/plant.h"

#include <QTemporaryDir>

// MQTT's thread beside those of links, of the HTTP server and of the station's main.

namespace {

/// Of a farewell that no broker answers.
enum : qint64 { STOP_LIMIT_US = 1500000 };

PlantSettings settingsFor(quint16 port)
{
    BrokerAddress server;
    server.host = QLatin1String("127.0.0.1");
    server.port = port;
    PlantSettings settings;
    settings.servers = {server};
    settings.node = QLatin1String("press");
    return settings;
}

PlantSettings bothDialectsAt(quint16 port)
{
    PlantSettings settings = settingsFor(port);
    settings.speaksJson = true;
    return settings;
}

/// The system's clock; it counts the questions.
class CountingClock : public SystemClock
{
public:
    qint64 steady() const override
    {
        ++asked;
        return SystemClock::steady();
    }

    mutable std::atomic<int> asked{0};
};

std::string devicesText(const std::vector<EdgeDevice>& devices)
{
    QStringList all;
    for (const EdgeDevice& device : devices)
        all << QString(QLatin1String("%1-%2 %3"))
                   .arg(device.link)
                   .arg(device.station)
                   .arg(device.tags.size());
    return all.join(QLatin1String(", ")).toStdString();
}

} // namespace

/// Without a simulated PLC: its tests run wherever threads and sockets do.
class PlantThread : public MachineTest
{
protected:
    explicit PlantThread(PlantSettings (*settingsAt)(quint16) = settingsFor)
        : plant(settingsAt(broker.port()),
                {clock, links, allowsWrites, folder.filePath(QLatin1String("sequence")),
                 folder.filePath(QLatin1String("cursor")), folder.filePath(QLatin1String("topics")),
                 [this] { ++changes; }}),
          intake(600000, clock, &plant.queue()),
          links(heard())
    {
    }
    ~PlantThread() override
    {
        links.stop(QLatin1String("the test is over"));
        plant.stop();
    }

    LinkSurroundings heard()
    {
        LinkSurroundings all = surroundings;
        all.listeners = {&news, &intake, &plant.queue()};
        return all;
    }

    const QTemporaryDir folder;
    const std::atomic<bool> allowsWrites{false};
    std::atomic<int> changes{0};
    SmallBroker broker;
    Plant plant;
    SampleIntake intake;
    StationLinks links;
};

class PlantThreadWithPlc : public PlantThread
{
protected:
    using PlantThread::PlantThread;

    void start(std::initializer_list<const char*> addresses)
    {
        configure(addresses);
        plant.start(nullptr);
    }

    void configure(std::initializer_list<const char*> addresses)
    {
        const LinkConfig one = config(QLatin1String("sim"), tags(addresses));
        plant.setDevices(plantDevices({one}));
        links.apply({one});
    }
};

class PlantThreadInBothDialects : public PlantThreadWithPlc
{
protected:
    PlantThreadInBothDialects() : PlantThreadWithPlc(bothDialectsAt) {}
};

TEST_F(PlantThreadWithPlc, PublishesWhileOthersAskAndGiveOrders)
{
    start({"MW100", "IW0"});
    std::atomic<bool> isDone{false};
    std::thread asking([&] {
        while (!isDone)
            for (const PlantStanding& standing : plant.standings())
                EXPECT_EQ(QLatin1String("sparkplug"), standing.dialect);
    });
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/NBIRTH/press", 1));
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/DBIRTH/press/plc-1", 1));
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/DDATA/press/plc-1", 3));
    configure({"MW100", "IW0", "MW102"});
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/NBIRTH/press", 2));
    isDone = true;
    asking.join();
    EXPECT_LT(0, changes);
    EXPECT_EQ(PlantStanding::BORN, plant.standings().at(0).state);
}

TEST_F(PlantThreadInBothDialects, PublishesInEachByAClientOfItsOwn)
{
    start({"MW100", "IW0"});
    std::atomic<bool> isDone{false};
    std::thread asking([&] {
        while (!isDone)
            EXPECT_EQ(2u, plant.standings().size());
    });
    EXPECT_TRUE(broker.awaitClient("kakb-kakb-press"));
    EXPECT_TRUE(broker.awaitClient("kakb-kakb-press-json"));
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/DDATA/press/plc-1", 3));
    EXPECT_TRUE(broker.awaitMessages("kakb/press/plc/IW0", 3));
    configure({"MW100", "IW0", "MW102"});
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/NBIRTH/press", 2));
    EXPECT_TRUE(broker.awaitMessages("kakb/press/plc/MW102", 1));
    isDone = true;
    asking.join();
    for (const PlantStanding& standing : plant.standings())
        EXPECT_EQ(PlantStanding::BORN, standing.state) << standing.dialect.toStdString();

    links.stop(QLatin1String("the station stopped"));
    plant.stop();
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/NDEATH/press", 1));
    EXPECT_TRUE(broker.awaitMessages("kakb/press/status", 2));
    EXPECT_TRUE(broker.awaitDisconnects(2));
}

TEST_F(PlantThreadWithPlc, SaysThatItEnds)
{
    start({"MW100"});
    ASSERT_TRUE(broker.awaitMessages("DBIRTH", 1));
    links.stop(QLatin1String("the station stopped"));
    const qint64 begin = clock.steady();
    plant.stop();
    EXPECT_LT(clock.steady() - begin, STOP_LIMIT_US) << "it waits for no more than the broker";
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/DDEATH/press/plc-1", 1));
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/NDEATH/press", 1));
    EXPECT_TRUE(broker.awaitDisconnects(1));
}

TEST_F(PlantThreadWithPlc, TellsHowItStandsOnlyWhenThatChanged)
{
    start({"MW100", "IW0"});
    ASSERT_TRUE(broker.awaitMessages("DDATA", 1));
    ASSERT_TRUE(news.await([&] { return plant.standings().at(0).state == PlantStanding::BORN; }));
    const quint64 sent = plant.standings().at(0).sent;
    const int before = changes;
    ASSERT_TRUE(news.await([&] { return plant.standings().at(0).sent >= sent + 5; }));
    EXPECT_EQ(before, changes);
}

TEST_F(PlantThread, EndsWhereNoBrokerIs)
{
    enum : qint64 { LIMIT_US = 2000000 };
    const quint16 nobody = 1; // of a service that no system has any more
    Plant alone(settingsFor(nobody),
                {clock, links, allowsWrites, folder.filePath(QLatin1String("s")),
                 folder.filePath(QLatin1String("c")), QString(), nullptr});
    alone.start(nullptr);
    EXPECT_TRUE(news.await([&] { return !alone.standings().at(0).trouble.isEmpty(); }));
    const qint64 begin = clock.steady();
    alone.stop();
    EXPECT_LT(clock.steady() - begin, LIMIT_US);
}

TEST_F(PlantThread, RestsWhileNothingHappens)
{
    enum { REST_US = 1000000, MOST_QUESTIONS = 1000 };
    const CountingClock counting;
    Plant quiet(settingsFor(broker.port()),
                {counting, links, allowsWrites, folder.filePath(QLatin1String("s")),
                 folder.filePath(QLatin1String("c")), QString(), nullptr});
    quiet.start(nullptr);
    ASSERT_TRUE(broker.awaitMessages("NBIRTH", 1));
    quiet.setDevices({}); // wakes the thread
    const int before = counting.asked;
    const qint64 end = clock.steady() + REST_US;
    EXPECT_TRUE(news.await([&] { return clock.steady() >= end; }));
    EXPECT_LT(counting.asked - before, MOST_QUESTIONS);
    quiet.stop();
}

TEST_F(PlantThread, MayNeverHaveBegun)
{
    EXPECT_TRUE(plant.standings().empty());
    plant.stop();
}

TEST_F(PlantThread, EachStationOfALinkIsADevice)
{
    std::vector<Tag> ofTwo = tags({"MW100", "MW102", "IW0"});
    ofTwo[1].station = 7;
    const LinkConfig one = config(QLatin1String("sim"), ofTwo);
    LinkConfig other = config(QLatin1String("sim"), tags({"MW100"}));
    other.name = QLatin1String("mixer");
    EXPECT_EQ("plc-1 2, plc-7 1, mixer-1 1", devicesText(plantDevices({one, other})));
}
