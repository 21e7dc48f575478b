#ifndef TIME_UNITS_H
#define TIME_UNITS_H

/// Times are in microseconds, but where a name says otherwise.
enum TimeUnits { MILLISECOND = 1000, SECOND = 1000000 };

enum { NANOSECONDS_PER_MICROSECOND = 1000 };

#endif
