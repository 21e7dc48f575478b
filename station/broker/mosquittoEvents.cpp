// What the library of Mosquitto tells, as events.
#include "broker/mosquittoClientState.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

enum { REFUSED_GRANT = 0x80 }; ///< of a SUBACK

/// The code of a CONNACK, in words.
QString refusalText(int code)
{
    QString reason = QString::fromLatin1(mosquitto_connack_string(code)).toLower();
    while (reason.endsWith(QLatin1Char('.')))
        reason.chop(1);
    return QLatin1String("the broker says no: ") + reason;
}

} // namespace

void MosquittoClient::State::setCallbacks() const
{
    mosquitto_connect_callback_set(client.get(), answered);
    mosquitto_disconnect_callback_set(client.get(), disconnected);
    mosquitto_subscribe_callback_set(client.get(), subscribed);
    mosquitto_publish_callback_set(client.get(), published);
    mosquitto_message_callback_set(client.get(), received);
    mosquitto_log_callback_set(client.get(), logged);
}

void MosquittoClient::State::answered(mosquitto*, void* state, int code)
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

void MosquittoClient::State::disconnected(mosquitto*, void* state, int code)
{
    of(state).end(of(state).reasonOf(code, errno));
}

void MosquittoClient::State::subscribed(mosquitto*, void* state, int number, int count,
                                        const int* granted)
{
    const auto found = of(state).ungranted.find(number);
    if (found == of(state).ungranted.end()) return;
    ClientEvent event;
    event.kind = ClientEvent::SUBSCRIBED;
    event.request = found->second.request;
    event.isGranted =
        count == found->second.topics &&
        std::all_of(granted, granted + count, [](int grant) { return grant < REFUSED_GRANT; });
    of(state).ungranted.erase(found);
    of(state).events.push_back(event);
}

void MosquittoClient::State::published(mosquitto*, void* state, int number)
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

void MosquittoClient::State::received(mosquitto*, void* state, const mosquitto_message* message)
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

void MosquittoClient::State::logged(mosquitto*, void* state, int level, const char* text)
{
    if (level == MOSQ_LOG_ERR) of(state).libraryTrouble = QString::fromUtf8(text);
}

QString MosquittoClient::State::reasonOf(int code, int systemError) const
{
    if (!refusal.isEmpty()) return refusal;
    if (tls && !tls->refusal().isEmpty())
        return QLatin1String("the broker's certificate is refused: ") + tls->refusal();
    switch (code) {
    case MOSQ_ERR_ERRNO:
        return systemError != 0 ? QString::fromLocal8Bit(std::strerror(systemError))
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

void MosquittoClient::State::end(const QString& reason)
{
    if (stage == OVER) return;
    stage = OVER;
    ClientEvent event;
    event.kind = ClientEvent::ENDED;
    event.reason = reason;
    events.push_back(event);
}
