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
    settings.speaksJson = false;
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

class PlantThread : public MachineTest
{
protected:
    explicit PlantThread()
        : plant(settingsFor(broker.port()),
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

    void start(const LinkConfig& config)
    {
        plant.setDevices(plantDevices({config}));
        links.apply({config});
        plant.start(nullptr);
    }

    const QTemporaryDir folder;
    const std::atomic<bool> allowsWrites{false};
    std::atomic<int> changes{0};
    SmallBroker broker;
    Plant plant;
    SampleIntake intake;
    StationLinks links;
};

TEST_F(PlantThread, PublishesWhileOthersAskAndGiveOrders)
{
    const LinkConfig first = config(QLatin1String("sim"), tags({"MW100", "IW0"}));
    start(first);
    std::atomic<bool> isDone{false};
    std::thread asking([&] {
        while (!isDone)
            for (const PlantStanding& standing : plant.standings())
                EXPECT_EQ(QLatin1String("sparkplug"), standing.dialect);
    });
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/NBIRTH/press", 1));
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/DBIRTH/press/plc-1", 1));
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/DDATA/press/plc-1", 3));
    const LinkConfig second = config(QLatin1String("sim"), tags({"MW100", "IW0", "MW102"}));
    plant.setDevices(plantDevices({second}));
    links.apply({second});
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/NBIRTH/press", 2));
    isDone = true;
    asking.join();
    EXPECT_LT(0, changes);
    EXPECT_EQ(PlantStanding::BORN, plant.standings().at(0).state);
}

TEST_F(PlantThread, SaysThatItEnds)
{
    start(config(QLatin1String("sim"), tags({"MW100"})));
    ASSERT_TRUE(broker.awaitMessages("DBIRTH", 1));
    links.stop(QLatin1String("the station stopped"));
    const qint64 begin = clock.steady();
    plant.stop();
    EXPECT_LT(clock.steady() - begin, STOP_LIMIT_US) << "it waits for no more than the broker";
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/DDEATH/press/plc-1", 1));
    EXPECT_TRUE(broker.awaitMessages("spBv1.0/kakb/NDEATH/press", 1));
    EXPECT_TRUE(broker.awaitDisconnect());
}

TEST_F(PlantThread, TellsHowItStandsOnlyWhenThatChanged)
{
    start(config(QLatin1String("sim"), tags({"MW100", "IW0"})));
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
    quint16 nobody = 0;
    {
        const BarePeer gone;
        nobody = gone.port();
    }
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
