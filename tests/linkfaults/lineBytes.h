#ifndef LINE_BYTES_H
#define LINE_BYTES_H

#include "plcModel.h"

#include "quorvane_ka_kb_plc.h"

#include <QByteArray>

// Between the driver, which speaks Qt, and the line, which does not.

inline QByteArray arrayOf(const Bytes& bytes)
{
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
}

inline Bytes requestOf(const FRAME_PRO& frame)
{
    return Bytes(frame.sendBuf, frame.sendBuf + frame.sendLen);
}

#endif
