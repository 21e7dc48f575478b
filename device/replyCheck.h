#ifndef REPLY_CHECK_H
#define REPLY_CHECK_H

#include "quorvane_ka_kb_plc.h"

#include <QByteArray>
#include <QList>

enum ReplyKind {
    REPLY_REJECTED = 0,
    REPLY_TO_READ = 1,
    REPLY_TO_WRITE = 2 ///< also: nothing was due and nothing came
};

/// Says whether `len` bytes answer the frame at the head of driver.frameQueue, and as which kind.
/// Only length and checksum are tested; `variables` is not used.
///
///   read reply    | station | 3 or 4 | n | n bytes | crc lo | crc hi |    n + 5 bytes
///   write echo    | station | function | address | value or count | crc lo | crc hi |    8 bytes
///   exception     | station | function + 128 | code | crc lo | crc hi |    5 bytes
///
/// An exception reply is rejected for its length alone, unless the read asked for no register.
/// Noise, a cut or doubled reply, and silence where a reply was due are rejected too. A late reply
/// of the right length and a reply of another station are accepted: the host keeps them away.
/// @return a ReplyKind
int check_rcv_data(const unsigned char* bytes, const QList<VARIABLE>& variables, int len);

// Kept for the family: frames that carry several variables. This device's builders never make such
// a frame.

/// Start of the n-th variable's data in a reply to the frame at driver.frameIndex.
int allMix_GetDataStartPosition(const QByteArray& reply, const QList<VARIABLE>& variables, int n);

/// @return 0
int allMix_GetRecvLenFromReadList(const QList<VARIABLE>& variables);

#endif
