// kakb-station: the resident station. It holds the values of its links and shows them in a browser.
#include "driver/companionFiles.h"
#include "driver/driverFile.h"
#include "links/tcpLink.h"
#include "program/configuredStation.h"
#include "program/stationOptions.h"
#include "program/stationProgram.h"
#include "program/stationSignals.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

namespace {

void printFailure(const std::exception& error)
{
    for (const QString& line : QString::fromUtf8(error.what()).split(QLatin1Char('\n')))
        std::fprintf(stderr, "kakb-station: %s\n", qUtf8Printable(line));
}

void run(const StationOptions& options)
{
    const DriverLibrary driver =
        loadDriver(options.driver.isEmpty() ? companionDriver() : options.driver);
    const StationConfig config = configuredStation(options, driver);
    if (options.isCheck) return;
    takeStationSignals();
    const StationProgram station(config, loadedFile(driver));
    std::printf("%s\n", qUtf8Printable(station.url()));
    std::fflush(stdout);
    while (nextStationOrder() != STOP_STATION)
        ;
}

StationStatus statusOf(const StationOptions& options)
{
    try {
        run(options);
        return STATION_DONE;
    } catch (const StationFailure& failure) {
        printFailure(failure);
        return failure.status;
    } catch (const DriverError& error) {
        printFailure(error);
        return STATION_DRIVER;
    }
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    StationOptions options;
    if (const auto status = parseStationOptions(argc, argv, options)) return *status;
    const StationStatus status = statusOf(options);
    if (!TcpLink::hasLeftLookupBehind()) return status;
    std::fflush(nullptr);
    std::_Exit(status); // a normal exit waits for the name lookup, which may never end
}
