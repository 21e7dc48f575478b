#include "deviceAreas.h"

const std::vector<DeviceArea>& deviceAreas()
{
    static const std::vector<DeviceArea> areas = {
        {"MW", 3000, 7095, false}, {"IW", 0, 255, false}, {"QW", 0, 255, false},
        {"MX", 3000, 65535, true}, {"IX", 0, 4095, true}, {"QX", 0, 4095, true},
    };
    return areas;
}

QString nameOf(const DeviceArea& area)
{
    return QString::fromLatin1(area.name);
}

std::string typedAddress(const DeviceArea& area, int number)
{
    const int unit = number - area.lowest;
    if (!area.bits) return std::to_string(2 * unit);
    return std::to_string(unit / 8) + "." + std::to_string(unit % 8);
}
