// kakb-host: a host for the driver, for a desk. It loads the driver as a panel does and talks to a
// PLC on a serial port or to the simulated one.
//
// usage: kakb-host demo [--driver FILE] [--port DEVICE] [--timeout-ms N]
//   --driver FILE    the driver library (default: the one built beside this program)
//   --port DEVICE    serial port of the PLC (default: a simulated PLC is started)
//   --timeout-ms N   longest that the PLC takes to begin its reply, 10 to 60000 (default 500)
// Exit status: 0 all was done, 1 usage, 2 the driver cannot be loaded, 3 the link failed,
//              4 a write or a recipe was not confirmed.

#include "driver/driverLibrary.h"
#include "links/exchange.h"
#include "links/simulatedPlc.h"
#include "verbs/demo.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QDir>

#include <cstdio>
#include <optional>
#include <string>

namespace {

enum ExitStatus {
    EXIT_DONE = 0,
    EXIT_USAGE = 1,
    EXIT_NO_DRIVER = 2,
    EXIT_LINK = 3,
    EXIT_NOT_CONFIRMED = 4
};

struct Options
{
    std::string driver;
    std::string port;
    int timeoutMs = 500;
};

QString besideThisProgram(const char* relativePath)
{
    return QDir(QCoreApplication::applicationDirPath())
        .absoluteFilePath(QString::fromLatin1(relativePath));
}

int demo(const Options& options)
{
    const DriverLibrary driver(options.driver.empty()
                                   ? besideThisProgram("../libquorvane_ka_kb_plc.so")
                                   : QString::fromStdString(options.driver));
    std::optional<SimulatedPlc> plc;
    QString port = QString::fromStdString(options.port);
    if (port.isEmpty()) port = plc.emplace(besideThisProgram("kakb-sim")).port();
    std::printf("port %s\n", qPrintable(port));
    ExchangeMachine::Times times;
    times.answer = qint64(options.timeoutMs) * 1000;
    Exchange exchange(driver, port, times);
    return runDemo(driver, exchange) ? EXIT_DONE : EXIT_NOT_CONFIRMED;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    CLI::App app("Host for the quorvane ka_kb driver", "kakb-host");
    app.require_subcommand(1);
    Options options;
    CLI::App* demoVerb = app.add_subcommand("demo", "Poll, write and transfer a recipe");
    demoVerb->add_option("--driver", options.driver, "driver library");
    demoVerb->add_option("--port", options.port, "serial port of the PLC");
    demoVerb
        ->add_option("--timeout-ms", options.timeoutMs,
                     "longest that the PLC takes to begin its reply")
        ->check(CLI::Range(10, 60000))
        ->capture_default_str();
    try {
        app.parse(argc, argv);
        return demo(options);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_DONE : EXIT_USAGE;
    } catch (const DriverError& error) {
        std::fprintf(stderr, "kakb-host: %s\n", error.what());
        return EXIT_NO_DRIVER;
    } catch (const LinkError& error) {
        std::fprintf(stderr, "kakb-host: %s\n", error.what());
        return EXIT_LINK;
    }
}
