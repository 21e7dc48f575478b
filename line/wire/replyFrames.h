#ifndef REPLY_FRAMES_H
#define REPLY_FRAMES_H

#include <QByteArray>

// How replies look, and where they lie among the bytes that a noisy line brought.
//
//   read reply   | station | function | n | n bytes | crc lo | crc hi |
//   write echo   | the request's first six bytes | crc lo | crc hi |
//   refusal      | station | function + 128 | code | crc lo | crc hi |
//
// A signature is all that a reply says of the request that it answers: station, function and number
// of data bytes of a read, the first six bytes of a write, station and function of a refusal.

/// The signature of the answer that a request asks for.
QByteArray answerSignature(const QByteArray& request);

/// The signature of a refusal of the request.
QByteArray refusalSignature(const QByteArray& request);

/// The signature of a whole reply, which is not empty.
QByteArray signatureOf(const QByteArray& reply);

/// The exception code of a whole reply, which is not empty, 0 to 255; -1 when it is no refusal.
int exceptionCodeOf(const QByteArray& reply);

/// Length of the whole reply with the right checksum that begins at `at`; 0 when none does.
int replyLengthAt(const QByteArray& received, int at);

/// The first reply to a request among the bytes, a refusal as well; empty: there is none.
QByteArray replyTo(const QByteArray& request, const QByteArray& received);

#endif
