#include "session/simulatedPlcArguments.h"

#include <set>

QStringList simulatedPlcArguments(const LineSettings& line, const std::vector<Tag>& tags)
{
    std::set<int> stations;
    for (const Tag& tag : tags)
        stations.insert(tag.station);
    QStringList arguments;
    for (const int station : stations)
        arguments << QLatin1String("--station") << QString::number(station);
    arguments << QLatin1String("--demo-signals") << QLatin1String("--baud")
              << QString::number(line.baud);
    return arguments;
}
