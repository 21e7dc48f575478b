#ifndef EXIT_STATUS_H
#define EXIT_STATUS_H

#include <QString>

#include <stdexcept>

/// What kakb-host ends with.
enum ExitStatus {
    EXIT_DONE,
    EXIT_USAGE,
    EXIT_DRIVER,
    EXIT_LINK,
    EXIT_TIME_OUT,
    EXIT_REFUSED,
    EXIT_VERIFY,
    EXIT_INVALID,
    EXIT_INTERRUPTED
};

/// By exit status.
constexpr const char* EXIT_MEANINGS[] = {"done",
                                         "usage, or a file that cannot be used or written",
                                         "the driver cannot be loaded",
                                         "the link cannot be opened, or was lost",
                                         "a station did not answer",
                                         "the PLC refused",
                                         "what was read back is not what was written",
                                         "check, series: the address is not valid",
                                         "interrupted before it was done; a watch ends with 0"};

/// A verb cannot do what it was asked. what() is one sentence in UTF-8.
struct VerbFailure : std::runtime_error
{
    VerbFailure(ExitStatus failedWith, const QString& sentence)
        : std::runtime_error(sentence.toStdString()), status(failedWith)
    {
    }

    ExitStatus status;
};

#endif
