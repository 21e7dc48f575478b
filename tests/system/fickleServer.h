#ifndef FICKLE_SERVER_H
#define FICKLE_SERVER_H

#include <atomic>
#include <thread>

/// A TCP server with RTU frames, made with libmodbus, that hangs up after a few answers. Each
/// register has the value REGISTER.
class FickleServer
{
public:
    enum { REGISTER = 4711, NO_ANSWERS = 0 };

    /// @param answers  answers before a connection is closed; NO_ANSWERS: the connection stays open
    ///                 without answers
    explicit FickleServer(int answers);
    ~FickleServer();
    FickleServer(const FickleServer&) = delete;
    FickleServer& operator=(const FickleServer&) = delete;

    int port() const
    {
        return m_port;
    }

    /// Makes the server keep this connection and all later connections. The first connection is 1.
    /// A later call with a higher number replaces this call.
    void stayFrom(int connection)
    {
        m_stayFrom = connection;
    }

    int connections() const
    {
        return m_connections;
    }
    int hangUps() const
    {
        return m_hangUps;
    }

private:
    void listenAnywhere();
    void run();
    void serve(int host);
    void listenOnly(int host) const;
    bool waitFor(int descriptor) const;
    bool stays() const
    {
        return m_connections >= m_stayFrom;
    }

    const int m_answers;
    int m_listener = -1;
    int m_port = 0;
    int m_stop;
    std::atomic<int> m_stayFrom{1 << 30};
    std::atomic<int> m_connections{0};
    std::atomic<int> m_hangUps{0};
    std::thread m_thread;
};

#endif
