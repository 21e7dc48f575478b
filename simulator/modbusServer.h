#ifndef MODBUS_SERVER_H
#define MODBUS_SERVER_H

#include "frame.h"
#include "plcStations.h"
#include "uniqueDescriptor.h"

#include <modbus/modbus.h>

#include <memory>
#include <set>

/// libmodbus at one end of a socket pair, which stands for the line. libmodbus itself reads and
/// checks each request and writes the reply. The constructor throws std::system_error when the
/// system refuses the socket pair.
class ModbusServer
{
public:
    ModbusServer();

    /// Executes a request on the memory of its station, and a broadcast on the memory of all
    /// stations but the deaf ones. Refuses a function code that the device does not have, whatever
    /// its data, and registers and bits outside the six areas.
    /// @return the reply; empty when none is due
    Bytes serve(const Bytes& request, PlcStations& stations, const std::set<int>& deaf = {});

private:
    bool receive(const Bytes& request, std::uint8_t* received, int& length);
    Bytes refuse(const Bytes& request, unsigned code);
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
