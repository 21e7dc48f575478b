#ifndef CONTROL_SOCKET_H
#define CONTROL_SOCKET_H

#include "lineClient.h"

#include <sys/types.h>

#include <map>
#include <string>

/// A Unix stream socket for several line clients, which only its owner can open. No call waits.
class ControlSocket
{
public:
    enum { MOST_CLIENTS = 16 };

    /// Replaces a socket that a killed program left behind; a living one and every other kind of
    /// file stay. Throws LinkError "PATH: reason".
    explicit ControlSocket(const std::string& path);

    /// Removes the socket's file, unless another one has taken its place.
    ~ControlSocket();
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

    /// Becomes readable when there is something to serve.
    int descriptor() const
    {
        return m_epoll.get();
    }

    /// Accepts one client, and reads once from each client that has sent something. So the time of
    /// a call is bounded, however much the clients send.
    void serve(const LineClient::Answer& answer);

private:
    void listenAt();
    void bindAt(const std::string& path);
    bool takeName(const std::string& made) const;
    void watch(int operation, int descriptor, unsigned events);
    void acceptClient();
    void serveClient(int descriptor, const LineClient::Answer& answer);

    std::string m_path;
    UniqueDescriptor m_epoll;
    UniqueDescriptor m_listener;
    dev_t m_device = 0; // of the socket's file, as m_inode
    ino_t m_inode = 0;
    std::map<int, LineClient> m_clients; // by descriptor
};

#endif
