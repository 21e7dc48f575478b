#include "requestedMemory.h"

#include <modbus/modbus.h>

#include <algorithm>

namespace {

enum { FIRST_AT = 2, COUNT_AT = 4, SHORTEST_REQUEST = 8, COILS = 65536 };

int wordAt(const Bytes& bytes, std::size_t at)
{
    return bytes[at] * 256 + bytes[at + 1];
}

bool isWithin(Area area, int first, int count)
{
    return first >= rowOf(area).first && first + count - 1 <= rowOf(area).last;
}

RequestedMemory registers(bool isInput, Access access, int first, int count)
{
    RequestedMemory requested;
    requested.spans = {{isInput, first * WORD_BITS, count * WORD_BITS}};
    requested.access = access;
    requested.isOfTheDevice =
        isInput ? isWithin(AREA_IW, first, count)
                : isWithin(AREA_QW, first, count) || isWithin(AREA_MW, first, count);
    return requested;
}

/// All coils share one numbering: from 3000 on they are markers, whatever QX has there.
RequestedMemory coils(int first, int count)
{
    RequestedMemory requested;
    requested.access = ACCESS_WRITE;
    requested.isOfTheDevice = first + count <= COILS;
    const int markers = rowOf(AREA_MX).first;
    const int outputs = std::clamp(markers - first, 0, count);
    if (outputs > 0) requested.spans.push_back({false, first, outputs});
    if (outputs < count) {
        const int firstMarker = first + outputs - markers;
        requested.spans.push_back({false, markers * WORD_BITS + firstMarker, count - outputs});
    }
    return requested;
}

} // namespace

std::optional<RequestedMemory> requestedMemory(const Bytes& request)
{
    if (request.size() < SHORTEST_REQUEST) return std::nullopt;
    const int first = wordAt(request, FIRST_AT);
    const int count = wordAt(request, COUNT_AT);
    const auto isFrom1To = [count](int most) { return count >= 1 && count <= most; };
    switch (request[FUNCTION_AT]) {
    case MODBUS_FC_READ_HOLDING_REGISTERS:
        if (!isFrom1To(MODBUS_MAX_READ_REGISTERS)) return std::nullopt;
        return registers(false, ACCESS_READ, first, count);
    case MODBUS_FC_READ_INPUT_REGISTERS:
        if (!isFrom1To(MODBUS_MAX_READ_REGISTERS)) return std::nullopt;
        return registers(true, ACCESS_READ, first, count);
    case MODBUS_FC_WRITE_SINGLE_REGISTER:
        return registers(false, ACCESS_WRITE, first, 1);
    case MODBUS_FC_WRITE_MULTIPLE_REGISTERS:
        if (!isFrom1To(MODBUS_MAX_WRITE_REGISTERS)) return std::nullopt;
        return registers(false, ACCESS_WRITE, first, count);
    case MODBUS_FC_WRITE_SINGLE_COIL:
        return coils(first, 1);
    case MODBUS_FC_WRITE_MULTIPLE_COILS:
        if (!isFrom1To(MODBUS_MAX_WRITE_BITS)) return std::nullopt;
        return coils(first, count);
    default:
        return std::nullopt;
    }
}
