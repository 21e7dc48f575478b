#ifndef PROTOCOL_LIMITS_H
#define PROTOCOL_LIMITS_H

/// The protocol's limits of one request (MODBUS Application Protocol V1.1b3).
enum ProtocolLimits {
    MOST_READ_REGISTERS = 125 ///< words that one read may ask for (6.3, 6.4)
};

#endif
