#ifndef UNIT_VALUES_H
#define UNIT_VALUES_H

#include <QtGlobal>

// Cached images hold every value low byte first.

inline int uchar2int16(unsigned char b0, unsigned char b1)
{
    return b0 + b1 * 256;
}

inline int uchar2int32(unsigned char b0, unsigned char b1, unsigned char b2, unsigned char b3)
{
    return int(quint32(b0) | quint32(b1) << 8 | quint32(b2) << 16 | quint32(b3) << 24);
}

/// The value with one bit set, or cleared when `on` is 0; unchanged when it has no such bit.
inline int _setBitValue(int value, int bit, int on)
{
    if (bit < 0 || bit >= 32) return value;
    const quint32 mask = quint32(1) << bit;
    return int(on != 0 ? quint32(value) | mask : quint32(value) & ~mask);
}

#endif
