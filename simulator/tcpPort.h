#ifndef TCP_PORT_H
#define TCP_PORT_H

#include "lineEnd.h"
#include "uniqueDescriptor.h"

/// A TCP port that carries frames as a serial line does. One host at a time: a new one takes the
/// place of the one before, which may be dead without a word.
class TcpPort : public LineEnd
{
public:
    /// @param bindAddress  IPv4 or IPv6, in digits
    /// @param port         0: any that is free
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
