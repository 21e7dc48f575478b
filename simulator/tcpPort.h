#ifndef TCP_PORT_H
#define TCP_PORT_H

#include "lineEnd.h"
#include "uniqueDescriptor.h"

/// A TCP port that carries RTU frames. It serves one host at a time: a new host replaces the host
/// before it, which may be gone without having closed its connection.
class TcpPort : public LineEnd
{
public:
    /// @param bindAddress  IPv4 or IPv6, in digits
    /// @param port         0: any free port
    TcpPort(const std::string& bindAddress, int port);

    std::string address() const override;
    int descriptor() const override
    {
        return m_host.get();
    }
    int listener() const override
    {
        return m_listener.get();
    }
    void acceptHost() override;
    Bytes receive() override;
    void send(const Bytes& bytes) override;

private:
    void listenAt(int port);

    std::string m_bindAddress;
    UniqueDescriptor m_listener;
    UniqueDescriptor m_host;
};

#endif
