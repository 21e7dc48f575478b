#include "program/simulatorStart.h"

#include "driver/companionFiles.h"

#include <set>

QString simulatorProgram(const LinkOptions& options)
{
    return options.simulator.empty() ? companionSimulator()
                                     : QString::fromStdString(options.simulator);
}

QStringList simulatorArguments(const LinkOptions& options, const LineSettings& line,
                               const std::vector<Tag>& tags)
{
    std::set<int> stations;
    for (const Tag& tag : tags)
        stations.insert(tag.station);
    QStringList arguments;
    for (const int station : stations)
        arguments << QLatin1String("--station") << QString::number(station);
    arguments << QLatin1String("--demo-signals") << QLatin1String("--baud")
              << QString::number(line.baud);
    const QString more = QString::fromStdString(options.simulatorArguments).simplified();
    if (!more.isEmpty()) arguments << more.split(QLatin1Char(' '));
    return arguments;
}
