#ifndef DRIVER_PARAMETER_H
#define DRIVER_PARAMETER_H

/// Positions of the parts, from 0, in the comma-separated text of intf_getDriverParameter. The four
/// parts of the serial line are adjacent.
enum ParameterPart {
    BAUD_PART = 1,
    DATA_BITS_PART = 2,
    PARITY_PART = 3,
    STOP_BITS_PART = 4,
    NETWORK_ADDRESS_PART = 7,
    PORT_PART = 8,
    PROTOCOL_PART = 9
};

#endif
