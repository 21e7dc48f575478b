#include "broker/mosquittoClient.h"

#include <mosquitto.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <map>
#include <new>

namespace {

enum { SHORTEST_KEEP_ALIVE_S = 5, LONGEST_KEEP_ALIVE_S = 65535, MOST_UNACKNOWLEDGED = 1000 };

enum { REFUSED_GRANT = 0x80 }; ///< of a SUBACK

struct DestroyClient
{
    void operator()(mosquitto* client) const
    {
        mosquitto_destroy(client);
    }
};

QString systemText(int number)
{
    return QString::fromLocal8Bit(std::strerror(number));
}

/// The code of a CONNACK, in words.
QString refusalText(int code)
{
    QString reason = QString::fromLatin1(mosquitto_connack_string(code)).toLower();
    while (reason.endsWith(QLatin1Char('.')))
        reason.chop(1);
    return QLatin1String("the broker says no: ") + reason;
}

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

void startLibrary()
{
    static const int started = mosquitto_lib_init();
    (void)started;
}

} // namespace

struct MosquittoClient::State
{
    enum Stage { DIALLING, GREETING, OPEN, OVER };

    std::unique_ptr<TlsContext> tls; ///< null: none; outlives the client
    std::unique_ptr<mosquitto, DestroyClient> client;
    Stage stage = DIALLING;
    bool isReached = false;
    bool isConnectSent = false;
    int keepAliveS = 0;
    QString refusal;        ///< of the CONNACK
    QString libraryTrouble; ///< the last error that the library told
    std::deque<ClientEvent> events;
    int lastRequest = 0;

    // The library numbers all messages with 16 bits, those with QoS 0 as well, and tells of both in
    // the same way. So a number alone proves no acknowledgement: the numbers of QoS 0 that the
    // system did not take yet are known in their order, and are looked at first.
    std::deque<int> unwritten;         ///< QoS 0
    std::map<int, int> unacknowledged; ///< QoS 1: number to request
    std::map<int, int> ungranted;      ///< number to request

    State(const ClientSettings& settings, const BrokerAddress& server)
        : tls(server.isEncrypted ? std::make_unique<TlsContext>(settings.tls, server.host)
                                 : nullptr),
          client(mosquitto_new(settings.clientId.toUtf8().constData(), true, this)),
          keepAliveS(
              std::clamp<int>(settings.keepAliveS, SHORTEST_KEEP_ALIVE_S, LONGEST_KEEP_ALIVE_S))
    {
        if (!client) throw std::bad_alloc();
        // The library writes only in flush().
        mosquitto_threaded_set(client.get(), true);
        mosquitto_int_option(client.get(), MOSQ_OPT_PROTOCOL_VERSION, MQTT_PROTOCOL_V311);
        mosquitto_int_option(client.get(), MOSQ_OPT_TCP_NODELAY, 1);
        mosquitto_int_option(client.get(), MOSQ_OPT_SEND_MAXIMUM, MOST_UNACKNOWLEDGED);
        if (tls) { // as it is: the library would choose another host and other authorities
            mosquitto_int_option(client.get(), MOSQ_OPT_SSL_CTX_WITH_DEFAULTS, 0);
            mosquitto_void_option(client.get(), MOSQ_OPT_SSL_CTX, tls->get());
        }
        if (!settings.user.isEmpty())
            mosquitto_username_pw_set(client.get(), settings.user.toUtf8().constData(),
                                      settings.password.constData());
        setCallbacks();
    }

    void setCallbacks() const
    {
        mosquitto_connect_callback_set(client.get(), answered);
        mosquitto_disconnect_callback_set(client.get(), disconnected);
        mosquitto_subscribe_callback_set(client.get(), subscribed);
        mosquitto_publish_callback_set(client.get(), published);
        mosquitto_message_callback_set(client.get(), received);
        mosquitto_log_callback_set(client.get(), logged);
    }

    // Callbacks of the library.

    static State& of(void* state)
    {
        return *static_cast<State*>(state);
    }

    static void answered(mosquitto*, void* state, int code)
    {
        if (code != 0) {
            of(state).refusal = refusalText(code);
            return; // the library ends the connection itself
        }
        of(state).stage = OPEN;
        ClientEvent event;
        event.kind = ClientEvent::CONNECTED;
        of(state).events.push_back(event);
    }

    static void disconnected(mosquitto*, void* state, int code)
    {
        of(state).end(of(state).reasonOf(code, errno));
    }

    static void subscribed(mosquitto*, void* state, int number, int count, const int* granted)
    {
        const auto found = of(state).ungranted.find(number);
        if (found == of(state).ungranted.end()) return;
        ClientEvent event;
        event.kind = ClientEvent::SUBSCRIBED;
        event.request = found->second;
        event.isGranted =
            std::all_of(granted, granted + count, [](int grant) { return grant < REFUSED_GRANT; });
        of(state).ungranted.erase(found);
        of(state).events.push_back(event);
    }

    static void published(mosquitto*, void* state, int number)
    {
        std::deque<int>& unwritten = of(state).unwritten;
        if (!unwritten.empty() && unwritten.front() == number) {
            unwritten.pop_front();
            return;
        }
        const auto found = of(state).unacknowledged.find(number);
        if (found == of(state).unacknowledged.end()) return;
        ClientEvent event;
        event.kind = ClientEvent::DELIVERED;
        event.request = found->second;
        of(state).unacknowledged.erase(found);
        of(state).events.push_back(event);
    }

    static void received(mosquitto*, void* state, const mosquitto_message* message)
    {
        ClientEvent event;
        event.kind = ClientEvent::RECEIVED;
        event.message.topic = QString::fromUtf8(message->topic);
        if (message->payloadlen > 0)
            event.message.payload =
                QByteArray(static_cast<const char*>(message->payload), message->payloadlen);
        event.message.qos = message->qos;
        event.message.isRetained = message->retain;
        of(state).events.push_back(event);
    }

    static void logged(mosquitto*, void* state, int level, const char* text)
    {
        if (level == MOSQ_LOG_ERR) of(state).libraryTrouble = QString::fromUtf8(text);
    }

    // The connection.

    int socket() const
    {
        return mosquitto_socket(client.get());
    }

    QString reasonOf(int code, int systemError) const
    {
        if (!refusal.isEmpty()) return refusal;
        if (tls && !tls->refusal().isEmpty())
            return QLatin1String("the broker's certificate is refused: ") + tls->refusal();
        switch (code) {
        case MOSQ_ERR_ERRNO:
            return systemError != 0 ? systemText(systemError)
                                    : QLatin1String("the connection is lost");
        case MOSQ_ERR_TLS:
            return libraryTrouble;
        case MOSQ_ERR_CONN_LOST:
        case MOSQ_ERR_CONN_REFUSED:
            return QLatin1String("the broker closed the connection");
        case MOSQ_ERR_KEEPALIVE:
            return QLatin1String("the broker does not answer any more");
        case MOSQ_ERR_PROTOCOL:
        case MOSQ_ERR_MALFORMED_PACKET:
            return QLatin1String("the peer does not speak MQTT 3.1.1");
        default:
            return QString::fromLatin1(mosquitto_strerror(code));
        }
    }

    /// The first reason counts.
    void end(const QString& reason)
    {
        if (stage == OVER) return;
        stage = OVER;
        ClientEvent event;
        event.kind = ClientEvent::ENDED;
        event.reason = reason;
        events.push_back(event);
    }

    void begin(const BrokerAddress& server, const QString& address, const BrokerMessage& will)
    {
        const int isSet = mosquitto_will_set(client.get(), will.topic.toUtf8().constData(),
                                             int(will.payload.size()), will.payload.constData(),
                                             will.qos, will.isRetained);
        if (isSet != MOSQ_ERR_SUCCESS) return end(QString::fromLatin1(mosquitto_strerror(isSet)));
        const int begun = mosquitto_connect_async(client.get(), address.toLatin1().constData(),
                                                  server.port, keepAliveS);
        if (begun > MOSQ_ERR_SUCCESS) end(reasonOf(begun, errno));
    }

    bool isShakingHands() const
    {
        if (!tls) return false;
        const auto* const ssl = static_cast<const SSL*>(mosquitto_ssl_get(client.get()));
        return ssl == nullptr || SSL_is_init_finished(ssl) == 0;
    }

    /// Data that a vanished peer's system leaves unacknowledged ends the connection as early as the
    /// keep-alive would.
    void noticeDeadPeers() const
    {
        const unsigned int limitMs = static_cast<unsigned int>(keepAliveS) * 1000;
        (void)setsockopt(socket(), IPPROTO_TCP, TCP_USER_TIMEOUT, &limitMs, sizeof limitMs);
    }

    void dial()
    {
        if (const int failure = socketError(socket())) return end(systemText(failure));
        isReached = true;
        noticeDeadPeers();
        stage = GREETING;
        if (tls) return read(); // begins TLS
        flush();
    }

    /// The library tells most failures by disconnected(), but not all.
    void check(int failure)
    {
        if (failure != MOSQ_ERR_SUCCESS) end(reasonOf(failure, errno));
    }

    void read()
    {
        const bool wasShakingHands = isShakingHands();
        errno = 0;
        check(mosquitto_loop_read(client.get(), 1));
        if (stage == OVER || !wasShakingHands) return;
        if (!isShakingHands()) return flush();
        // The library takes the end of a connection for a handshake that waits.
        if (isClosedByPeer(socket())) end(QLatin1String("the broker closed the connection in TLS"));
    }

    void flush()
    {
        if (stage != GREETING && stage != OPEN) return;
        if (isShakingHands() || !mosquitto_want_write(client.get())) return;
        isConnectSent = true;
        errno = 0;
        check(mosquitto_loop_write(client.get(), 1));
    }

    int nextRequest()
    {
        lastRequest = lastRequest == std::numeric_limits<int>::max() ? 1 : lastRequest + 1;
        return lastRequest;
    }
};

MosquittoClient::MosquittoClient(const ClientSettings& settings, const BrokerAddress& server,
                                 const QString& address, const BrokerMessage& will)
    : m_state((startLibrary(), std::make_unique<State>(settings, server)))
{
    m_state->begin(server, address, will);
}

MosquittoClient::~MosquittoClient() = default;

pollfd MosquittoClient::awaited() const
{
    pollfd awaited = {-1, 0, 0};
    if (m_state->stage == State::OVER) return awaited;
    awaited.fd = m_state->socket();
    if (m_state->stage == State::DIALLING)
        awaited.events = POLLOUT;
    else
        awaited.events = mosquitto_want_write(m_state->client.get()) ? POLLIN | POLLOUT : POLLIN;
    return awaited;
}

void MosquittoClient::drive(short found)
{
    if (found == 0 || m_state->stage == State::OVER) return;
    if (m_state->stage == State::DIALLING) return m_state->dial();
    if ((found & ~POLLOUT) != 0 || m_state->isShakingHands()) m_state->read();
    m_state->flush();
}

void MosquittoClient::lookAfter()
{
    if (m_state->stage != State::GREETING && m_state->stage != State::OPEN) return;
    m_state->check(mosquitto_loop_misc(m_state->client.get()));
    m_state->flush();
}

bool MosquittoClient::isReached() const
{
    return m_state->isReached;
}

bool MosquittoClient::isOver() const
{
    return m_state->stage == State::OVER;
}

bool MosquittoClient::isConnectSent() const
{
    return m_state->isConnectSent;
}

int MosquittoClient::subscribe(const QStringList& topics)
{
    if (m_state->stage != State::OPEN) return 0;
    std::vector<QByteArray> texts;
    for (const QString& topic : topics)
        texts.push_back(topic.toUtf8());
    std::vector<char*> names;
    for (QByteArray& text : texts)
        names.push_back(text.data());
    int number = 0;
    const int failure = mosquitto_subscribe_multiple(
        m_state->client.get(), &number, int(names.size()), names.data(), 1, 0, nullptr);
    if (failure != MOSQ_ERR_SUCCESS) return 0;
    const int request = m_state->nextRequest();
    m_state->ungranted[number] = request;
    m_state->flush();
    return request;
}

int MosquittoClient::publish(const BrokerMessage& message)
{
    if (m_state->stage != State::OPEN) return 0;
    int number = 0;
    const int failure = mosquitto_publish(
        m_state->client.get(), &number, message.topic.toUtf8().constData(),
        int(message.payload.size()), message.payload.constData(), message.qos, message.isRetained);
    if (failure != MOSQ_ERR_SUCCESS) return 0;
    const int request = m_state->nextRequest();
    if (message.qos == 0)
        m_state->unwritten.push_back(number);
    else if (!m_state->unacknowledged.emplace(number, request).second)
        giveUp(QLatin1String("the broker acknowledges nothing")); // the number is in use
    m_state->flush();
    return request;
}

bool MosquittoClient::isDrained() const
{
    return m_state->stage == State::OVER || !mosquitto_want_write(m_state->client.get());
}

void MosquittoClient::disconnect()
{
    if (m_state->stage != State::OPEN) return;
    (void)mosquitto_disconnect(m_state->client.get());
    m_state->flush();
}

void MosquittoClient::giveUp(const QString& reason)
{
    m_state->end(reason);
}

std::deque<ClientEvent>& MosquittoClient::events()
{
    return m_state->events;
}
