#include "api/apiFixture.h"

namespace {

class PlantRoute : public ApiTest
{
protected:
    PlantRoute()
    {
        PlantStanding sparkplug;
        sparkplug.dialect = QLatin1String("sparkplug");
        sparkplug.state = PlantStanding::BORN;
        sparkplug.server = QLatin1String("mqtt://broker:1883");
        sparkplug.since = 1700000000123;
        sparkplug.behind = 12;
        sparkplug.dropped = 3;
        sparkplug.sessions = 4;
        sparkplug.sent = 500;
        sparkplug.historical = 60;
        sparkplug.commands = 7;
        sparkplug.refusedCommands = 2;
        PlantStanding json;
        json.dialect = QLatin1String("json");
        json.trouble = QLatin1String("the broker \"b\" refused");
        m_standings = {sparkplug, json};
    }

    std::vector<PlantStanding> m_standings;
};

} // namespace

TEST_F(PlantRoute, WithoutMqttTheListIsEmpty)
{
    EXPECT_EQ("200 []", summaryOf(get("/api/v1/plant")));
}

TEST_F(PlantRoute, TellsHowEachDialectStands)
{
    m_parts.plant = [this] { return m_standings; };
    EXPECT_EQ("200 [{\"dialect\":\"sparkplug\",\"state\":\"connected\","
              "\"server\":\"mqtt://broker:1883\",\"since\":1700000000123,\"trouble\":null,"
              "\"behind\":12,\"dropped\":3,\"sessions\":4,\"sent\":500,\"historical\":60,"
              "\"commands\":7,\"refusedCommands\":2},"
              "{\"dialect\":\"json\",\"state\":\"pausing\",\"server\":\"\",\"since\":0,"
              "\"trouble\":\"the broker \\\"b\\\" refused\",\"behind\":null,\"dropped\":null,"
              "\"sessions\":0,\"sent\":0,\"historical\":0,\"commands\":0,"
              "\"refusedCommands\":0}]",
              summaryOf(get("/api/v1/plant")));
}

TEST_F(PlantRoute, MetricsTellTheSame)
{
    EXPECT_FALSE(get("/metrics").body.contains("kakb_mqtt"));
    m_parts.plant = [this] { return m_standings; };
    const QByteArray text = get("/metrics").body;
    for (const char* const line : {"kakb_mqtt_connected{dialect=\"sparkplug\"} 1\n",
                                   "kakb_mqtt_connected{dialect=\"json\"} 0\n",
                                   "kakb_mqtt_behind_rows{dialect=\"sparkplug\"} 12\n",
                                   "kakb_mqtt_dropped_rows_total{dialect=\"sparkplug\"} 3\n",
                                   "kakb_mqtt_sessions_total{dialect=\"sparkplug\"} 4\n",
                                   "kakb_mqtt_sent_values_total{dialect=\"sparkplug\"} 500\n",
                                   "kakb_mqtt_historical_values_total{dialect=\"sparkplug\"} 60\n",
                                   "kakb_mqtt_commands_total{dialect=\"sparkplug\"} 7\n",
                                   "kakb_mqtt_refused_commands_total{dialect=\"sparkplug\"} 2\n"})
        EXPECT_TRUE(text.contains(line)) << line;
    for (const char* const name : {"kakb_mqtt_behind_rows", "kakb_mqtt_dropped_rows_total"})
        EXPECT_FALSE(text.contains(name + QByteArray("{dialect=\"json\"}")))
            << "it keeps states, not rows";
}
