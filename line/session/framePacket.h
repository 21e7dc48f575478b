#ifndef FRAME_PACKET_H
#define FRAME_PACKET_H

#include "session/frameGatherer.h"

// The packets of a capture that Wireshark's Modbus RTU dissector reads. The capture's packets are
// IPv4 without a link layer, LINKTYPE_RAW.

enum { CAPTURED_PLC_PORT = 10502 };

/// The packet of a frame. On every kind of link, each frame becomes a made-up UDP datagram over
/// IPv4 between 192.0.2.1 (the host) and port 10502 of 192.0.2.2 (the PLC). The dissector needs the
/// port: a request of function 5 or 6 and its echo have the same bytes. "Decode As" does not tell
/// the dissector the port.
/// @param number  of the packet in its capture, as IPv4 identification; its low 16 bits count
QByteArray framePacket(const GatheredFrame& frame, int number);

/// Whether a capture contains the frame: all sent frames and all recognised answers. It does not
/// contain stray bytes, damaged replies and frames that answer no request, such as frames of
/// another station: the dissector would show them as malformed packets or as answers.
bool isCaptured(const GatheredFrame& frame);

#endif
