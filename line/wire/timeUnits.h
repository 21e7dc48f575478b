#ifndef TIME_UNITS_H
#define TIME_UNITS_H

/// All times are in microseconds, unless a name states another unit.
enum TimeUnits { MILLISECOND = 1000, SECOND = 1000000 };

enum { NANOSECONDS_PER_MICROSECOND = 1000 };

#endif
