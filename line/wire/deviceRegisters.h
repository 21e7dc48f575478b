#ifndef DEVICE_REGISTERS_H
#define DEVICE_REGISTERS_H

/// Where the controller's areas lie among the registers of function 3 and the bits of functions 1
/// and 2. Inputs and outputs begin at 0; only the markers have a base of their own.
enum DeviceRegisters {
    FIRST_MARKER = 3000,       ///< MW 0, and MX 0.0 among the bits
    LAST_MARKER = 7095,        ///< as a register
    LAST_INPUT_OR_OUTPUT = 255 ///< as a register
};

#endif
