#include "http/httpServer.h"

#include "http/serverLoop.h"

#include <csignal>

namespace {

/// Signals are for the main thread.
void serve(ServerLoop& loop)
{
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    loop.run();
}

} // namespace

HttpServer::HttpServer(const Settings& settings, const HttpRoutes& routes, Turn turn)
    : m_routes(routes, m_clock),
      m_loop(
          std::make_unique<ServerLoop>(settings.address, settings.port, m_routes, std::move(turn)))
{
    setAccess(settings.token, settings.hostNames);
}

HttpServer::~HttpServer()
{
    m_loop->stop();
    if (m_thread.joinable()) m_thread.join();
}

void HttpServer::start()
{
    m_thread = std::thread(&serve, std::ref(*m_loop));
}

quint16 HttpServer::port() const
{
    return m_loop->port();
}

void HttpServer::wake()
{
    m_loop->wake();
}

int HttpServer::clients() const
{
    return m_loop->clients();
}

void HttpServer::setAccess(const QByteArray& token, const QStringList& hostNames)
{
    m_routes.setAccess(token, hostNames);
    m_loop->rightsChanged();
}
