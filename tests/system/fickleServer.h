#ifndef FICKLE_SERVER_H
#define FICKLE_SERVER_H

#include <atomic>
#include <thread>

/// A TCP peer with RTU frames, served by libmodbus, that hangs up after a few answers. Every
/// register reads as REGISTER.
class FickleServer
{
public:
    enum { REGISTER = 4711, NO_ANSWERS = 0 };

    /// @param answers  per connection before it is closed; NO_ANSWERS: keeps it and says nothing
    explicit FickleServer(int answers);
    ~FickleServer();
    FickleServer(const FickleServer&) = delete;
    FickleServer& operator=(const FickleServer&) = delete;

    int port() const
    {
        return m_port;
    }

    /// From this connection on, the first being 1, hangs up no more; until told a higher one.
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
