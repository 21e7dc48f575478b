#include "events/streamedStation.h"

// How the station stands with its broker, as the stream tells it.

namespace {

class StreamedPlant : public ::testing::Test
{
protected:
    void stand(const char* document)
    {
        plant = document;
        station.streams.plantChanged();
        station.run();
    }

    /// The documents that the client got since the last call.
    static std::vector<QByteArray> toldTo(TestClient& client)
    {
        std::vector<QByteArray> documents;
        for (const ReceivedMessage& message : client.take("plant"))
            documents.push_back(message.data);
        return documents;
    }

    using Documents = std::vector<QByteArray>;

    QByteArray plant = "[1]";
    StreamedStation station{[this] { return plant; }};
};

} // namespace

TEST_F(StreamedPlant, IsToldToWhoConnects)
{
    TestClient first = station.connect();
    EXPECT_EQ(Documents{"[1]"}, toldTo(first));
    station.passMs(300);
    TestClient second = station.connect();
    EXPECT_EQ(Documents{"[1]"}, toldTo(second));
}

TEST_F(StreamedPlant, IsToldAtOnceWhenItChanged)
{
    TestClient client = station.connect();
    station.passMs(500);
    toldTo(client);
    stand("[2]");
    EXPECT_EQ(Documents{"[2]"}, toldTo(client));
}

TEST_F(StreamedPlant, IsToldWithTheBeatWhenFiguresChanged)
{
    TestClient client = station.connect();
    station.passMs(500);
    toldTo(client);
    plant = "[2]";
    station.passMs(499);
    EXPECT_EQ(Documents(), toldTo(client));
    station.passMs(1);
    EXPECT_EQ(Documents{"[2]"}, toldTo(client));
}

TEST_F(StreamedPlant, IsNotToldTwice)
{
    TestClient client = station.connect();
    toldTo(client);
    stand("[1]");
    for (int second = 0; second < 3; ++second) {
        station.passMs(1000);
        EXPECT_EQ(Documents(), toldTo(client));
    }
}

TEST_F(StreamedPlant, IsToldAgainToWhoFellBehind)
{
    TestClient client = station.connect();
    toldTo(client);
    stand("[2]");
    station.passMs(30000);
    EXPECT_TRUE(toldTo(client).empty()) << "it was left out with the other messages of that time";
    station.passMs(1000);
    EXPECT_EQ(Documents{"[2]"}, toldTo(client));
}

TEST_F(StreamedPlant, IsToldAsItIsToWhoComesBack)
{
    {
        TestClient client = station.connect();
        station.passMs(100);
    }
    stand("[2]");
    TestClient again = station.connect();
    EXPECT_EQ(Documents{"[2]"}, toldTo(again));
}

TEST_F(StreamedPlant, WakesNobodyWhileNoClientIsThere)
{
    station.run();
    const int before = station.wakes;
    station.streams.plantChanged();
    EXPECT_EQ(before, station.wakes);
    TestClient client = station.connect();
    const int connected = station.wakes;
    station.streams.plantChanged();
    station.streams.plantChanged();
    EXPECT_EQ(connected + 1, station.wakes);
}

TEST(StreamedWithoutPlant, TellsNothingOfIt)
{
    StreamedStation station;
    TestClient client = station.connect();
    station.streams.plantChanged();
    station.passMs(2000);
    EXPECT_TRUE(client.take("plant").empty());
}
