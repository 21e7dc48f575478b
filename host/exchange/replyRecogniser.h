#ifndef REPLY_RECOGNISER_H
#define REPLY_RECOGNISER_H

#include <QByteArray>

// Finds the answer to one request in what a noisy line brought. The driver takes any bytes of the
// right length and checksum, so this is where a reply of another station or to another request is
// kept away from it.
//
//   read reply   | station | function | n | n bytes | crc lo | crc hi |
//   write echo   | the request's first six bytes | crc lo | crc hi |
//   exception    | station | function + 128 | code | crc lo | crc hi |
//
// Stray bytes may stand before and behind. Nothing is assumed of when the bytes come or how they
// are cut.

/// What only an answer to this request can begin with.
/// @param request      the request as sent
/// @param replyLength  length of the reply that is due
QByteArray replySignature(const QByteArray& request, int replyLength);

/// Where the first frame of a signature and length lies in what came; -1: nowhere.
int replyPosition(const QByteArray& received, const QByteArray& signature, int length);

struct RECOGNISED
{
    QByteArray reply;      ///< the answer alone; empty: not there yet
    int exceptionCode = 0; ///< 1 to 255 when the answer is an exception
};

/// Looks through all bytes that came since the request was sent.
RECOGNISED recogniseReply(const QByteArray& received, const QByteArray& request, int replyLength);

/// An exception code in words.
const char* exceptionText(int code);

#endif
