#ifndef ROW_LISTENER_H
#define ROW_LISTENER_H

#include "samples/sample.h"

/// Told each reading that became a row, in the order of their numbers.
class RowListener
{
public:
    virtual ~RowListener() = default;

    /// Called by links' threads and the history's thread, one at a time, while the intake and
    /// perhaps a link are locked: it must note the sample and return.
    virtual void rowNoted(const Sample& reading) = 0;
};

#endif
