#ifndef TAG_H
#define TAG_H

#include "plan/readRate.h"
#include "wire/deviceRegisters.h"

#include <QMetaType>
#include <QString>

/// Address number of the first marker, MW 0 and MX 0.0. The other areas begin at number 0.
enum { FIRST_MARKER_NUMBER = FIRST_MARKER };

/// Whether the area holds bits. Names of bit areas end in X, names of word areas in W.
inline bool isBitArea(const QString& area)
{
    return area.endsWith(QLatin1Char('X'));
}

/// A variable of the PLC with the user's name for it.
struct Tag
{
    enum Type { BOOL, INT16, UINT16, INT32, UINT32, FLOAT32 };
    enum WordOrder { LOW_WORD_FIRST, HIGH_WORD_FIRST }; ///< matters to the 32-bit types
    enum Format { DECIMAL, HEXADECIMAL, BINARY };       ///< the last two: unsigned types only

    enum Access { READ_ONLY, READ_WRITE };

    QString name;
    int station = 1; ///< 1 to 247
    QString area;    ///< MW, IW, QW, MX, IX or QX
    QString address; ///< normal form, "100" or "12.3"
    int number = 0;  ///< address number of the first unit
    Type type = UINT16;
    WordOrder wordOrder = LOW_WORD_FIRST;
    Format format = DECIMAL;   ///< of the value's text
    ReadRate rate;             ///< only polling uses it
    Access access = READ_ONLY; ///< whether the resident station may write it; READ_WRITE only where
                               ///< the area can be written
    double deadband = 0; ///< the history leaves out changes up to this size; finite, 0 or more
    QString comment;

    bool isBit() const
    {
        return type == BOOL;
    }

    /// Number of its units: bits for BOOL, otherwise words.
    int units() const
    {
        return type == INT32 || type == UINT32 || type == FLOAT32 ? 2 : 1;
    }
};

#endif
