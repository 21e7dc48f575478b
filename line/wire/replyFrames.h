#ifndef REPLY_FRAMES_H
#define REPLY_FRAMES_H

#include <QByteArray>

// The layout of replies, and the search for replies among the bytes of a noisy line.
//
//   read reply   | station | function | n | n bytes | crc lo | crc hi |
//   write echo   | the request's first six bytes | crc lo | crc hi |
//   refusal      | station | function + 128 | code | crc lo | crc hi |
//
// A signature is the part of a reply that identifies its request: station, function and number of
// data bytes of a read; the first six bytes of a write; station and function of a refusal. Two
// requests whose answers have equal signatures cannot be told apart by their answers.

/// The signature of the expected answer to a request.
QByteArray answerSignature(const QByteArray& request);

/// The signature of a refusal of the request.
QByteArray refusalSignature(const QByteArray& request);

/// The signature of a reply.
/// @param reply  a whole reply, not empty
QByteArray signatureOf(const QByteArray& reply);

/// The exception code of a refusal, 0 to 255; -1 for every other reply.
/// @param reply  a whole reply, not empty
int exceptionCodeOf(const QByteArray& reply);

/// Length in bytes of the whole reply that begins at offset `at` and has the right checksum; 0: no
/// such reply begins there.
int replyLengthAt(const QByteArray& received, int at);

/// The first reply to the request among the received bytes; a refusal counts. Empty: no reply.
QByteArray replyTo(const QByteArray& request, const QByteArray& received);

#endif
