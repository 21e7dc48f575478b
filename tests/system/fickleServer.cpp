#include "fickleServer.h"

#include <modbus/modbus.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <system_error>

namespace {

enum { STATION = 1, REGISTERS = 4096, BAUD = 38400 };

struct FreeModbus
{
    void operator()(modbus_t* context) const
    {
        modbus_free(context);
    }
    void operator()(modbus_mapping_t* mapping) const
    {
        modbus_mapping_free(mapping);
    }
};

} // namespace

FickleServer::FickleServer(int answers) : m_answers(answers), m_stop(eventfd(0, EFD_CLOEXEC))
{
    listenAnywhere();
    m_thread = std::thread([this] { run(); });
}

FickleServer::~FickleServer()
{
    eventfd_write(m_stop, 1);
    m_thread.join();
    close(m_listener);
    close(m_stop);
}

void FickleServer::listenAnywhere()
{
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(m_listener, generic, size) != 0 || listen(m_listener, 1) != 0 ||
        getsockname(m_listener, generic, &size) != 0)
        throw std::system_error(errno, std::generic_category(), "no port to listen at");
    m_port = ntohs(address.sin_port);
}

/// @return false when the server is to stop
bool FickleServer::waitFor(int descriptor) const
{
    pollfd awaited[] = {{descriptor, POLLIN, 0}, {m_stop, POLLIN, 0}};
    return poll(awaited, 2, -1) > 0 && awaited[1].revents == 0;
}

void FickleServer::run()
{
    while (waitFor(m_listener)) {
        const int host = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (host < 0) continue;
        ++m_connections;
        serve(host);
        close(host);
        ++m_hangUps;
    }
}

/// Waits until the host hangs up.
void FickleServer::listenOnly(int host) const
{
    uint8_t heard[MODBUS_RTU_MAX_ADU_LENGTH];
    while (waitFor(host) && recv(host, heard, sizeof heard, 0) > 0) {
    }
}

void FickleServer::serve(int host)
{
    if (m_answers == NO_ANSWERS) return listenOnly(host);
    const std::unique_ptr<modbus_t, FreeModbus> context(modbus_new_rtu("-", BAUD, 'N', 8, 1));
    const std::unique_ptr<modbus_mapping_t, FreeModbus> mapping(
        modbus_mapping_new(0, 0, REGISTERS, 0));
    std::fill_n(mapping->tab_registers, int(REGISTERS), uint16_t(REGISTER));
    modbus_set_slave(context.get(), STATION);
    modbus_set_socket(context.get(), host);
    for (int answered = 0; (stays() || answered < m_answers) && waitFor(host);) {
        uint8_t request[MODBUS_RTU_MAX_ADU_LENGTH];
        const int length = modbus_receive(context.get(), request);
        if (length < 0) return;
        if (length > 0 && modbus_reply(context.get(), request, length, mapping.get()) > 0)
            ++answered;
    }
}
