// kakb-host: a command-line host for the driver. It loads the driver as a panel does and talks to a
// PLC on a serial port or over a network, or to the simulated PLC.
//
// usage: kakb-host [--driver FILE] VERB ...
//
//   info                                    identity, default settings, areas
//   check MW100|AREA ADDRESS [--count N] [--write]  whether an address is valid, or why not
//   series MW100|AREA ADDRESS --count N --interval K  addresses at an interval
//   plan [--tags FILE] [--every DURATION] [--gap N]  the requests that read the tags, and the cycle
//                                           time
//   watch [--tags FILE] [--seconds N]       polls the tags and shows changes; on a terminal a table
//         [--every DURATION] [--gap N]      with keys, which can write
//         [--until NAME=VALUE] [--fail-when-bad SECONDS] [--csv]
//   read [NAME...] [--tags FILE] [--both-orders] [--gap N]  reads tags or addresses once
//   write NAME=VALUE... [--tags FILE] [--hold DURATION] [--allow-nan]  writes values and waits for
//                                           the PLC's confirmation
//   recipe download|upload FILE [--verify]  transfers a recipe
//   dump WORDS... [--output FILE]           writes words of the PLC into a file
//   diff FILE                               compares the PLC with a recipe or a dump
//   scan [--stations LIST] [--bauds LIST]   finds the stations that answer
//
// A NAME is a name of the tag file or a typed address, see line/plan/typedAddress.h.
//
// Options of all verbs with a link (defaults and ranges: kakb-host VERB --help):
//   --link sim | serial:DEVICE,BAUD,DATA BITS,PARITY,STOP BITS | tcp:HOST,PORT
//   --timeout-ms --attempts --pause-ms --echo --time --trace --pcap FILE --json
//   --simulator FILE --simulator-arguments TEXT
//
// Exit statuses: kakb-host --help, from program/exitStatus.h

#include "driver/companionFiles.h"
#include "driver/driverFile.h"
#include "links/tcpLink.h"
#include "output/outputStream.h"
#include "program/interrupt.h"
#include "program/printing.h"
#include "verbs/commandLine.h"

#include <QCoreApplication>

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace {

ExitStatus failed(ExitStatus status, const std::exception& error)
{
    printFailure(error);
    return status;
}

/// Ends with a usage error when the output cannot be written: the user did not see the result.
ExitStatus cannotWrite()
{
    std::fprintf(stderr, "kakb-host: cannot write the output\n");
    return EXIT_USAGE;
}

/// EPIPE is success: the reader closed the pipe.
ExitStatus outputStatus(OutputStream& output)
{
    const int failure = output.flush();
    return failure == 0 || failure == EPIPE ? EXIT_DONE : cannotWrite();
}

/// The exit status when no verb runs: after help, after the version, or after bad arguments.
ExitStatus parsedStatus(ExitStatus parsed)
{
    const bool isShown = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    return parsed != EXIT_DONE || isShown ? parsed : cannotWrite();
}

ExitStatus run(const Command& command)
{
    const int values = command.writesFileToStandardOutput ? STDERR_FILENO : STDOUT_FILENO;
    OutputStream output(stdout, values, isToEnd);
    const OutputStream errors(stderr, STDERR_FILENO, isToEnd);
    try {
        const DriverLibrary driver = loadDriver(
            command.driver.empty() ? companionDriver() : QString::fromStdString(command.driver));
        const ExitStatus status = command.verb(driver);
        return status == EXIT_DONE ? outputStatus(output) : status;
    } catch (const VerbFailure& error) {
        return failed(error.status, error);
    } catch (const DriverError& error) {
        return failed(EXIT_DRIVER, error);
    } catch (const LinkError& error) {
        return failed(EXIT_LINK, error);
    } catch (const std::exception& error) { // malformed link addresses and unusable files
        return failed(EXIT_USAGE, error);
    }
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    Command command;
    if (const std::optional<ExitStatus> status = parseCommandLine(argc, argv, command))
        return parsedStatus(*status);
    std::signal(SIGPIPE, SIG_IGN); // a closed pipe makes writing fail with EPIPE instead
    const ExitStatus status = run(command);
    if (!TcpLink::hasLeftLookupBehind()) return status;
    std::fflush(nullptr);
    std::_Exit(status); // a normal exit waits for the name lookup, which may never end
}
