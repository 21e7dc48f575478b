#ifndef ADDRESS_CODEC_H
#define ADDRESS_CODEC_H

#include <QByteArray>
#include <QString>

// Turns the address text that a user types into the address number, and back.
//
//   MX, IX, QX   byte "." bit     12.3 -> 99, in MX 3099
//   MW, IW, QW   even byte offset 100  -> 50, in MW 3050
//
// Nothing here checks an area's range; the bit digit is not range-checked either (5.9 is 49).

/// Address number of a bit address; -1 for a malformed text; 0 for any area but MX, IX and QX.
int addr_str2int(const QString& text, const QString& regName);

/// Text of a bit address; empty for any area but MX, IX and QX.
QString addr_int2str(int addr, const QString& regName);

/// Address number of any address, guided by the area's format.
/// @return 1, or -1 for a bad text. After -1 `out` is untouched for a bit text, the raw number for
///         an odd word text, and 0 (3000 in MW) for a malformed word text.
int a2i(const QString& text, int& out, const QString& format, const QString& regName);

/// True for a format such as "DDDDO", whose characters differ: the address of a bit.
bool isBitFormat(const QString& format);

/// From a checked address number to the number on the wire: the same on this device.
int addrOffset(const QString& regName, int addr);

/// Value of the two hexadecimal characters at `position`; a place past the end counts as 0.
int asc2hex(const QByteArray& bytes, int position);

#endif
