#include "api/plantMetrics.h"

namespace {

using Text = OpenMetricsText;
using Standings = std::vector<PlantStanding>;

void addCounts(Text& text, const Standings& standings, const char* name, const char* help,
               quint64 PlantStanding::*count)
{
    text.beginFamily(name, Text::COUNTER, help);
    for (const PlantStanding& standing : standings)
        text.add({{"dialect", standing.dialect}}, double(standing.*count));
}

/// A dialect that keeps states has no rows.
void addRows(Text& text, const Standings& standings, const char* name, Text::Type type,
             const char* help, std::optional<qint64> PlantStanding::*rows)
{
    text.beginFamily(name, type, help);
    for (const PlantStanding& standing : standings)
        if (standing.*rows) text.add({{"dialect", standing.dialect}}, double(*(standing.*rows)));
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
    addRows(text, standings, "mqtt_behind_rows", Text::GAUGE,
            "Rows of the history that the broker does not surely have.", &PlantStanding::behind);
    addRows(text, standings, "mqtt_dropped_rows", Text::COUNTER,
            "Rows that the broker will never have.", &PlantStanding::dropped);
    addCounts(text, standings, "mqtt_sessions", "Sessions that a broker granted.",
              &PlantStanding::sessions);
    addCounts(text, standings, "mqtt_sent_values", "Values that were published.",
              &PlantStanding::sent);
    addCounts(text, standings, "mqtt_historical_values",
              "Values that were published late, from the history.", &PlantStanding::historical);
    addCounts(text, standings, "mqtt_commands", "Commands that came.", &PlantStanding::commands);
    addCounts(text, standings, "mqtt_refused_commands",
              "Commands that the station or the PLC refused.", &PlantStanding::refusedCommands);
}
