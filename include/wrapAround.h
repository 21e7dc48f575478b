#ifndef WRAP_AROUND_H
#define WRAP_AROUND_H

#include <QtGlobal>

// Addresses and counts come from the host unchecked. Their 32-bit arithmetic wraps around, and is
// done unsigned because a signed overflow would be undefined.

inline int wrapAdd(int a, int b)
{
    return int(quint32(a) + quint32(b));
}

inline int wrapSub(int a, int b)
{
    return int(quint32(a) - quint32(b));
}

inline int wrapMul(int a, int b)
{
    return int(quint32(a) * quint32(b));
}

#endif
