#ifndef MODBUS_SERVER_H
#define MODBUS_SERVER_H

#include "frame.h"
#include "plcStations.h"
#include "uniqueDescriptor.h"

#include <modbus/modbus.h>

#include <memory>
#include <set>

/// libmodbus at one end of a pair of connected sockets, which stands for the line. It reads and
/// checks each request and writes the reply by itself. Throws std::system_error when the system
/// refuses the pair.
class ModbusServer
{
public:
    ModbusServer();

    /// Executes a request on the memory of the station that it names; a broadcast on that of all
    /// but the deaf ones. A function that the device does not have is refused, whatever its data
    /// are.
    /// @return the reply; empty when none is due
    Bytes serve(const Bytes& request, PlcStations& stations, const std::set<int>& deaf = {});

private:
    bool receive(const Bytes& request, std::uint8_t* received, int& length);
    Bytes refuse(const Bytes& request);
    void execute(const std::uint8_t* received, int length, PlcMemory& memory);
    Bytes takeReply();

    struct FreeContext
    {
        void operator()(modbus_t* context) const
        {
            modbus_free(context);
        }
    };
    UniqueDescriptor m_ours;
    UniqueDescriptor m_theirs;
    std::unique_ptr<modbus_t, FreeContext> m_context;
};

#endif
