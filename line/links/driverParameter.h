#ifndef DRIVER_PARAMETER_H
#define DRIVER_PARAMETER_H

/// Where the parts of the driver's parameter string stand, the comma-separated text of
/// intf_getDriverParameter. The line's four follow each other.
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
