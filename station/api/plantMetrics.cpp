#include "api/plantMetrics.h"

namespace {

using Text = OpenMetricsText;
using Standings = std::vector<PlantStanding>;

template <typename Count>
void addFamily(Text& text, const Standings& standings, const char* name, Text::Type type,
               const char* help, Count PlantStanding::*count)
{
    text.beginFamily(name, type, help);
    for (const PlantStanding& standing : standings)
        text.add({{"dialect", standing.dialect}}, double(standing.*count));
}

void addConnected(Text& text, const Standings& standings)
{
    text.beginFamily("mqtt_connected", Text::GAUGE, "Whether values flow to a broker.");
    for (const PlantStanding& standing : standings)
        text.add({{"dialect", standing.dialect}}, standing.state == PlantStanding::BORN ? 1 : 0);
}

} // namespace

void addPlantMetrics(OpenMetricsText& text, const Standings& standings)
{
    addConnected(text, standings);
    addFamily(text, standings, "mqtt_behind_rows", Text::GAUGE,
              "Rows of the history that the broker does not surely have.", &PlantStanding::behind);
    addFamily(text, standings, "mqtt_dropped_rows", Text::COUNTER,
              "Rows that the broker will never have.", &PlantStanding::dropped);
    addFamily(text, standings, "mqtt_sessions", Text::COUNTER, "Sessions that a broker granted.",
              &PlantStanding::sessions);
    addFamily(text, standings, "mqtt_sent_values", Text::COUNTER, "Values that were published.",
              &PlantStanding::sent);
    addFamily(text, standings, "mqtt_historical_values", Text::COUNTER,
              "Values that were published late, from the history.", &PlantStanding::historical);
    addFamily(text, standings, "mqtt_commands", Text::COUNTER, "Commands that came.",
              &PlantStanding::commands);
    addFamily(text, standings, "mqtt_refused_commands", Text::COUNTER,
              "Commands that the station or the PLC refused.", &PlantStanding::refusedCommands);
}
