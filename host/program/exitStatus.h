#ifndef EXIT_STATUS_H
#define EXIT_STATUS_H

#include <QString>

#include <stdexcept>

/// Exit statuses of kakb-host.
enum ExitStatus {
    EXIT_DONE,
    EXIT_USAGE,
    EXIT_DRIVER,
    EXIT_LINK,
    EXIT_TIME_OUT,
    EXIT_REFUSED,
    EXIT_VERIFY,
    EXIT_INVALID,
    EXIT_INTERRUPTED,
    EXIT_UNHEALTHY
};

/// Meanings of the exit statuses, by number. The help shows them.
constexpr const char* EXIT_MEANINGS[] = {
    "done",
    "usage, or a file that cannot be used or written",
    "the driver cannot be loaded",
    "the link cannot be opened, or was lost",
    "a station did not answer",
    "the PLC refused",
    "values differ: what was read back, or what diff compared",
    "check, series: the address is not valid",
    "interrupted before it was done; a watch without --until ends with 0",
    "watch: a tag was bad too long, or --until did not come true in time"};

/// A verb failed. what() is one sentence in UTF-8 with the reason.
struct VerbFailure : std::runtime_error
{
    VerbFailure(ExitStatus failedWith, const QString& sentence)
        : std::runtime_error(sentence.toStdString()), status(failedWith)
    {
    }

    ExitStatus status;
};

#endif
