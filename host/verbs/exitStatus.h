#ifndef EXIT_STATUS_H
#define EXIT_STATUS_H

#include <QString>

#include <stdexcept>

/// What kakb-host ends with.
enum ExitStatus {
    EXIT_DONE = 0,
    EXIT_USAGE = 1,    ///< bad arguments or a file that cannot be used
    EXIT_DRIVER = 2,   ///< the driver cannot be loaded
    EXIT_LINK = 3,     ///< the link cannot be opened, or was lost
    EXIT_TIME_OUT = 4, ///< a station did not answer
    EXIT_REFUSED = 5,  ///< the PLC refused
    EXIT_VERIFY = 6,   ///< what was read back is not what was written
    EXIT_INVALID = 7   ///< `check` and `series`: the address is not valid
};

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
