// kakb-host: a host for the driver, for a desk. It loads the driver as a panel does and talks to a
// PLC on a serial port, over a network, or to the simulated one.
//
// usage: kakb-host [--driver FILE] VERB ...
//
//   info                                    identity, default settings, areas
//   check AREA ADDRESS [--count N] [--write]  whether an address is valid, or why not
//   series AREA ADDRESS --count N --interval K  addresses at an interval
//   plan [--tags FILE]                      the requests that read the tags, and the cycle time
//   watch [--tags FILE] [--seconds N]       polls the tags and shows changes
//   read [NAME...] [--tags FILE]            reads tags or addresses once
//   write NAME=VALUE... [--tags FILE]       writes; done when the PLC has confirmed
//   recipe download|upload FILE [--verify]  transfers a recipe
//
// Options of the verbs with a link (defaults and ranges: kakb-host VERB --help):
//   --link sim | serial:DEVICE,BAUD,DATA BITS,PARITY,STOP BITS | tcp:HOST,PORT
//   --timeout-ms --attempts --pause-ms --turnaround-us --trace --pcap FILE --json
//   --simulator FILE --simulator-arguments TEXT
//
// Exit statuses: kakb-host --help, from program/exitStatus.h

#include "links/tcpLink.h"
#include "output/outputStream.h"
#include "program/companionFiles.h"
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

/// Nothing was done for a user who does not get to see it.
ExitStatus cannotWrite()
{
    std::fprintf(stderr, "kakb-host: cannot write the output\n");
    return EXIT_USAGE;
}

/// One who stopped reading saw enough.
ExitStatus outputStatus(OutputStream& output)
{
    const int failure = output.flush();
    return failure == 0 || failure == EPIPE ? EXIT_DONE : cannotWrite();
}

/// Of a command line that is all: help, the version, or bad arguments.
ExitStatus parsedStatus(ExitStatus parsed)
{
    const bool isShown = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    return parsed != EXIT_DONE || isShown ? parsed : cannotWrite();
}

ExitStatus run(const Command& command)
{
    OutputStream output(stdout, STDOUT_FILENO, isToEnd);
    const OutputStream errors(stderr, STDERR_FILENO, isToEnd);
    try {
        const DriverLibrary driver(command.driver.empty() ? companionDriver()
                                                          : QString::fromStdString(command.driver));
        const ExitStatus status = command.verb(driver);
        return status == EXIT_DONE ? outputStatus(output) : status;
    } catch (const VerbFailure& error) {
        return failed(error.status, error);
    } catch (const DriverError& error) {
        return failed(EXIT_DRIVER, error);
    } catch (const LinkError& error) {
        return failed(EXIT_LINK, error);
    } catch (const std::exception& error) { // bad link texts and files
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
    std::signal(SIGPIPE, SIG_IGN); // a reader that went away only makes writing fail
    const ExitStatus status = run(command);
    if (!TcpLink::hasLeftLookupBehind()) return status;
    std::fflush(nullptr);
    std::_Exit(status); // Qt would wait for a name server that may never answer
}
