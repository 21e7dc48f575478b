// kakb-station: the resident station. It holds the values of its links, shows them in a browser,
// and tells them to other programs.
//
// usage: kakb-station [--listen ADDRESS:PORT] [--tags FILE --link LINK | --config FILE.toml] ...
//
// Options and exit statuses: kakb-station --help, from program/stationOptions.cpp and
// program/stationStatus.h

#include "driver/companionFiles.h"
#include "driver/driverFile.h"
#include "links/tcpLink.h"
#include "program/configuredStation.h"
#include "program/heapUse.h"
#include "program/serviceManager.h"
#include "program/stationOptions.h"
#include "program/stationProgram.h"
#include "program/stationSignals.h"

#include <QCoreApplication>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <initializer_list>

namespace {

/// Prints one line for each sentence.
void tell(const QString& sentences)
{
    for (const QString& sentence : sentences.split(QLatin1Char('\n')))
        std::fprintf(stderr, "kakb-station: %s\n", qUtf8Printable(sentence));
}

/// Reads the configuration again. One that is broken changes nothing.
void reload(StationProgram& station, const StationOptions& options, const DriverLibrary& driver)
{
    tellReloading();
    try {
        const QStringList keys = station.reload(configuredStation(options, driver));
        giveBackFreedHeap();
        tell(QLatin1String("read the configuration again"));
        if (!keys.isEmpty())
            tell(QString(QLatin1String("these keys change only with a restart: %1"))
                     .arg(keys.join(QLatin1String(", "))));
    } catch (const StationFailure& failure) {
        tell(QString::fromUtf8(failure.what()));
        tell(QLatin1String("the configuration has mistakes: everything goes on as before"));
    }
    tellReady();
}

/// Opens what is closed of standard input, output and error: the station's own files must not take
/// their numbers, or messages would go into them.
void holdStandardStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(stream, F_GETFD) < 0) ::open("/dev/null", O_RDWR);
}

void serve(const StationOptions& options, const StationConfig& config, const DriverLibrary& driver)
{
    ::umask(S_IRWXG | S_IRWXO); // the files of the station are its user's alone
    const bool canReload = !options.config.isEmpty();
    takeStationSignals(canReload);
    StationProgram station(config, loadedFile(driver));
    giveBackFreedHeap();
    std::printf("%s\n", qUtf8Printable(station.url()));
    std::fflush(stdout);
    tellReady();
    for (;;) {
        switch (nextStationOrder()) {
        case STOP_STATION:
            tellStopping();
            return;
        case RELOAD_STATION:
            reload(station, options, driver);
            break;
        case NO_ORDER:
            giveBackFreedHeap(); // of what waited in memory while the machine was busy
            break;
        }
    }
}

void run(const StationOptions& options)
{
    const DriverLibrary driver =
        loadDriver(options.driver.isEmpty() ? companionDriver() : options.driver);
    const StationConfig config = configuredStation(options, driver);
    if (!options.isCheck) serve(options, config, driver);
}

StationStatus statusOf(const StationOptions& options)
{
    try {
        run(options);
        return STATION_DONE;
    } catch (const StationFailure& failure) {
        tell(QString::fromUtf8(failure.what()));
        return failure.status;
    } catch (const DriverError& error) {
        tell(QString::fromUtf8(error.what()));
        return STATION_DRIVER;
    }
}

} // namespace

int main(int argc, char** argv)
{
    holdStandardStreams();
    boundHeaps();
    const QCoreApplication application(argc, argv);
    StationOptions options;
    if (const auto status = parseStationOptions(argc, argv, options)) return *status;
    const StationStatus status = statusOf(options);
    if (!TcpLink::hasLeftLookupBehind()) return status;
    std::fflush(nullptr);
    std::_Exit(status); // a normal exit waits for the name lookup, which may never end
}
