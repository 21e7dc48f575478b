// The connection to a broker: its socket, TLS, and the bytes of MQTT.
#include "broker/mosquittoClientState.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>

namespace {

enum { SHORTEST_KEEP_ALIVE_S = 5, LONGEST_KEEP_ALIVE_S = 65535 };

/// All that have a number. With fewer the library holds the others back, and messages with QoS 0
/// overtake them.
enum { MOST_UNACKNOWLEDGED = 65535 };

/// What the system noted against a socket whose connection is made, and clears; 0: nothing.
int socketError(int socket)
{
    int number = 0;
    socklen_t size = sizeof number;
    if (getsockopt(socket, SOL_SOCKET, SO_ERROR, &number, &size) != 0) return errno;
    return number;
}

/// Whether the peer has closed the connection, and nothing more can be read.
bool isClosedByPeer(int socket)
{
    char byte;
    const ssize_t count = recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    return count == 0 || (count < 0 && errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR);
}

} // namespace

MosquittoClient::State::State(const ClientSettings& settings, const BrokerAddress& server)
    : tls(server.isEncrypted ? std::make_unique<TlsContext>(settings.tls, server.host) : nullptr),
      client(mosquitto_new(settings.clientId.toUtf8().constData(), true, this)),
      keepAliveS(std::clamp<int>(settings.keepAliveS, SHORTEST_KEEP_ALIVE_S, LONGEST_KEEP_ALIVE_S))
{
    if (!client) throw std::runtime_error("no client can have this client id");
    // The library writes only in flush().
    mosquitto_threaded_set(client.get(), true);
    mosquitto_int_option(client.get(), MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V311);
    mosquitto_int_option(client.get(), MOSQ_OPT_TCP_NODELAY, 1);
    mosquitto_int_option(client.get(), MOSQ_OPT_SEND_MAXIMUM, MOST_UNACKNOWLEDGED);
    if (tls) { // as it is: the library would choose another host and other authorities
        mosquitto_int_option(client.get(), MOSQ_OPT_SSL_CTX_WITH_DEFAULTS, 0);
        mosquitto_void_option(client.get(), MOSQ_OPT_SSL_CTX, tls->get());
    }
    setCallbacks();
    identify(settings);
}

void MosquittoClient::State::identify(const ClientSettings& settings)
{
    if (settings.user.isEmpty()) return;
    const int failure = mosquitto_username_pw_set(client.get(), settings.user.toUtf8().constData(),
                                                  settings.password.constData());
    if (failure != MOSQ_ERR_SUCCESS)
        throw std::runtime_error(std::string("user: ") + mosquitto_strerror(failure));
}

void MosquittoClient::State::begin(const BrokerAddress& server, const QString& address,
                                   const BrokerMessage& will)
{
    const int isSet =
        mosquitto_will_set(client.get(), will.topic.toUtf8().constData(), int(will.payload.size()),
                           will.payload.constData(), will.qos, will.isRetained);
    if (isSet != MOSQ_ERR_SUCCESS) return end(QString::fromLatin1(mosquitto_strerror(isSet)));
    const int begun = mosquitto_connect_async(client.get(), address.toLatin1().constData(),
                                              server.port, keepAliveS);
    if (begun > MOSQ_ERR_SUCCESS) end(reasonOf(begun, errno));
}

bool MosquittoClient::State::isShakingHands() const
{
    if (!tls) return false;
    const auto* const ssl = static_cast<const SSL*>(mosquitto_ssl_get(client.get()));
    return ssl == nullptr || SSL_is_init_finished(ssl) == 0;
}

/// Data that a vanished peer's system leaves unacknowledged for half a keep-alive ends the
/// connection. So it ends when the broker ends it, behind one and a half: the library sends a ping
/// within one.
void MosquittoClient::State::noticeDeadPeers() const
{
    const unsigned int limitMs = static_cast<unsigned int>(keepAliveS) * 1000 / 2;
    (void)setsockopt(socket(), IPPROTO_TCP, TCP_USER_TIMEOUT, &limitMs, sizeof limitMs);
}

void MosquittoClient::State::dial()
{
    if (const int failure = socketError(socket()))
        return end(QString::fromLocal8Bit(std::strerror(failure)));
    isReached = true;
    noticeDeadPeers();
    stage = GREETING;
    if (tls) return read(); // begins TLS
    flush();
}

void MosquittoClient::State::check(int failure)
{
    if (failure != MOSQ_ERR_SUCCESS) end(reasonOf(failure, errno));
}

bool MosquittoClient::State::isTaken(int failure)
{
    check(failure);
    return failure == MOSQ_ERR_SUCCESS;
}

void MosquittoClient::State::read()
{
    const bool wasShakingHands = isShakingHands();
    errno = 0;
    check(mosquitto_loop_read(client.get(), 1));
    if (stage == OVER || !wasShakingHands) return;
    if (!isShakingHands()) return flush();
    // The library takes the end of a connection for a handshake that waits.
    if (isClosedByPeer(socket())) end(QLatin1String("the broker closed the connection in TLS"));
}

void MosquittoClient::State::flush()
{
    if (stage != GREETING && stage != OPEN) return;
    if (isShakingHands() || !mosquitto_want_write(client.get())) return;
    isConnectSent = true;
    errno = 0;
    check(mosquitto_loop_write(client.get(), 1));
}

int MosquittoClient::State::nextRequest()
{
    lastRequest = lastRequest == std::numeric_limits<int>::max() ? 1 : lastRequest + 1;
    return lastRequest;
}
