#include "modbusServer.h"

#include "requestedMemory.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace {

// The whole request is in the socket before libmodbus reads it, so the time-outs only keep
// libmodbus from waiting. It also sleeps for a response time-out ahead of some exceptions.
const unsigned BYTE_TIMEOUT_US = 10000;
const unsigned RESPONSE_TIMEOUT_US = 1;
const int REQUEST_WAIT_MS = 100;

const int ANY_BAUD = 38400; // libmodbus requires a rate, but never opens the port

[[noreturn]] void fail(const char* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

bool isServed(int function)
{
    switch (function) {
    case MODBUS_FC_READ_HOLDING_REGISTERS:
    case MODBUS_FC_READ_INPUT_REGISTERS:
    case MODBUS_FC_WRITE_SINGLE_COIL:
    case MODBUS_FC_WRITE_SINGLE_REGISTER:
    case MODBUS_FC_WRITE_MULTIPLE_COILS:
    case MODBUS_FC_WRITE_MULTIPLE_REGISTERS:
        return true;
    default:
        return false;
    }
}

} // namespace

ModbusServer::ModbusServer() : m_context(modbus_new_rtu("socket pair", ANY_BAUD, 'N', 8, 1))
{
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) fail("no socket pair");
    m_ours.reset(ends[0]);
    m_theirs.reset(ends[1]);
    if (!m_context || modbus_set_socket(m_context.get(), m_theirs.get()) != 0 ||
        modbus_set_byte_timeout(m_context.get(), 0, BYTE_TIMEOUT_US) != 0 ||
        modbus_set_response_timeout(m_context.get(), 0, RESPONSE_TIMEOUT_US) != 0)
        fail("libmodbus");
}

Bytes ModbusServer::serve(const Bytes& request, PlcStations& stations, const std::set<int>& deaf)
{
    const int station = request[STATION_AT];
    if (station != BROADCAST_STATION && !stations.find(station)) return {};
    std::uint8_t received[MODBUS_RTU_MAX_ADU_LENGTH];
    int length = 0;
    modbus_set_slave(m_context.get(), station);
    if (!isServed(request[FUNCTION_AT])) return refuse(request, MODBUS_EXCEPTION_ILLEGAL_FUNCTION);
    const std::optional<RequestedMemory> requested = requestedMemory(request);
    if (requested && !requested->isOfTheDevice)
        return refuse(request, MODBUS_EXCEPTION_ILLEGAL_DATA_ADDRESS);
    if (!receive(request, received, length)) return {};
    if (station != BROADCAST_STATION) {
        execute(received, length, *stations.find(station));
        return takeReply();
    }
    for (auto& entry : stations.all()) {
        if (deaf.count(entry.first) == 0) execute(received, length, entry.second);
    }
    takeReply();
    return {};
}

bool ModbusServer::receive(const Bytes& request, std::uint8_t* received, int& length)
{
    if (send(m_ours.get(), request.data(), request.size(), MSG_NOSIGNAL) != ssize_t(request.size()))
        return false;
    // Hazard: libmodbus would wait for the first byte for ever.
    pollfd wanted = {m_theirs.get(), POLLIN, 0};
    if (poll(&wanted, 1, REQUEST_WAIT_MS) <= 0) return false;
    length = modbus_receive(m_context.get(), received);
    if (length > 0) return true;
    Bytes rest(MODBUS_RTU_MAX_ADU_LENGTH);
    while (recv(m_theirs.get(), rest.data(), rest.size(), MSG_DONTWAIT) > 0) {
    }
    return false;
}

/// Bypasses modbus_receive(), which knows no request length for functions that it does not serve.
Bytes ModbusServer::refuse(const Bytes& request, unsigned code)
{
    if (request[STATION_AT] == BROADCAST_STATION) return {};
    modbus_reply_exception(m_context.get(), request.data(), code);
    return takeReply();
}

void ModbusServer::execute(const std::uint8_t* received, int length, PlcMemory& memory)
{
    if (modbus_reply(m_context.get(), received, length, memory.mapping()) >= 0)
        memory.reflectWrite(received);
}

Bytes ModbusServer::takeReply()
{
    Bytes reply(MODBUS_RTU_MAX_ADU_LENGTH);
    const ssize_t count = recv(m_ours.get(), reply.data(), reply.size(), MSG_DONTWAIT);
    reply.resize(count > 0 ? std::size_t(count) : 0);
    return reply;
}
