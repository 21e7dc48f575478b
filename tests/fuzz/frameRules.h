#ifndef FRAME_RULES_H
#define FRAME_RULES_H

#include "quorvane_ka_kb_plc.h"

#include <QByteArray>

class FuzzInput;

/// Ends the process with the rule's name when it does not hold; libFuzzer keeps the input.
void require(bool holds, const char* rule);

/// CRC-16/MODBUS, bit by bit (MODBUS over Serial Line V1.02, 6.2.2).
unsigned checksumOf(const unsigned char* bytes, int length);

/// The bytes closed by their checksum.
QByteArray closed(QByteArray body);

/// What holds of every frame that the driver offers, whatever it was made from.
void requireSoundFrame(const FRAME_PRO& frame);

/// Whether these bytes answer the frame, by length and checksum alone.
bool answers(const FRAME_PRO& frame, const QByteArray& reply);

/// Any reply: a good one with any data, one that is damaged, any bytes, or none.
QByteArray anyReply(FuzzInput& input, const FRAME_PRO& frame);

/// A reply of the right length with any data and a good checksum; empty when none can come.
QByteArray goodReply(FuzzInput& input, const FRAME_PRO& frame);

/// The words or bits that a reply carries, as intf_getData gives them.
QByteArray valuesIn(const QByteArray& reply, const FRAME_PRO& frame);

bool isWordName(const QString& regName);

#endif
