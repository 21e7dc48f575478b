#ifndef DEVICE_AREAS_H
#define DEVICE_AREAS_H

#include <QString>

#include <string>
#include <vector>

/// One register area as the host header's table of address numbers has it.
struct DeviceArea
{
    const char* name;
    int lowest;  ///< address number
    int highest; ///< address number
    bool bits;
};

/// In register order.
const std::vector<DeviceArea>& deviceAreas();

QString nameOf(const DeviceArea& area);

/// What a user types for an address number: an even byte offset, or byte and bit.
std::string typedAddress(const DeviceArea& area, int number);

#endif
