#ifndef WATCH_OUTPUT_H
#define WATCH_OUTPUT_H

#include "program/hostProgram.h"

/// The output of a watch: a table on a terminal, or lines.
class WatchOutput
{
public:
    virtual ~WatchOutput() = default;

    /// Waits at most `ms` milliseconds for news, and for the keys of the user.
    virtual News wait(HostProgram& host, int ms)
    {
        return host.next(ms);
    }

    virtual void show(const News& news, HostProgram& host) = 0;

    /// The user has ended the watch by a key.
    virtual bool isOver() const
    {
        return false;
    }

    /// Shows the figures; called once, after the last show().
    virtual void end(const LinkFigures& figures) = 0;
};

#endif
