#include "program/simulatorStart.h"

#include "driver/companionFiles.h"
#include "session/simulatedPlcArguments.h"

QString simulatorProgram(const LinkOptions& options)
{
    return options.simulator.empty() ? companionSimulator()
                                     : QString::fromStdString(options.simulator);
}

QStringList simulatorArguments(const LinkOptions& options, const LineSettings& line,
                               const std::vector<Tag>& tags)
{
    QStringList arguments = simulatedPlcArguments(line, tags);
    const QString more = QString::fromStdString(options.simulatorArguments).simplified();
    if (!more.isEmpty()) arguments << more.split(QLatin1Char(' '));
    return arguments;
}
