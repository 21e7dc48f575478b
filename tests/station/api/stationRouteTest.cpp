#include "apiFixture.h"

#include <thread>

namespace {

class StationRoute : public ApiTest
{
protected:
    /// A link as the document has it.
    QJsonObject link(int index) const
    {
        const QJsonObject station = QJsonDocument::fromJson(get("/api/v1/station").body).object();
        return station.value(QLatin1String("links")).toArray().at(index).toObject();
    }

    static QJsonObject onlyStation(const QJsonObject& link)
    {
        const QJsonArray stations = link.value(QLatin1String("stations")).toArray();
        EXPECT_EQ(1, stations.size());
        return stations.at(0).toObject();
    }

    static std::string trouble(const QJsonObject& object)
    {
        const QJsonValue value = object.value(QLatin1String("trouble"));
        EXPECT_TRUE(value.isString() || value.isNull());
        return value.isNull() ? "null" : value.toString().toStdString();
    }

    /// The links cannot be opened; waits until both threads have found out.
    void awaitLosses() const
    {
        for (const auto& link : m_links.all()) {
            while (link->values().state().standing != LINK_LOST)
                std::this_thread::yield();
        }
    }
};

} // namespace

TEST_F(StationRoute, SaysWhyALinkIsLostAndItsStationsAreSilent)
{
    awaitLosses();
    const QJsonObject left = link(0);
    EXPECT_EQ(QLatin1String("lost"), left.value(QLatin1String("state")).toString());
    EXPECT_NE(std::string::npos, trouble(left).find("/no/such/port")) << trouble(left);
    EXPECT_EQ("link lost: " + trouble(left), trouble(onlyStation(left)));
}
