#include "broker/mosquittoClientState.h"

namespace {

void startLibrary()
{
    static const int started = mosquitto_lib_init();
    (void)started;
}

} // namespace

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

int MosquittoClient::keepAliveS() const
{
    return m_state->keepAliveS;
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
    if (!m_state->isTaken(failure)) return 0;
    const int request = m_state->nextRequest();
    m_state->ungranted[number] = {request, int(names.size())};
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
    if (!m_state->isTaken(failure)) return 0;
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
