#ifndef MOSQUITTO_CLIENT_STATE_H
#define MOSQUITTO_CLIENT_STATE_H

#include "broker/mosquittoClient.h"

#include <mosquitto.h>

#include <map>

// A connection as the library has it. `mosquittoEvents.cpp` notes what the library tells,
// `mosquittoConnection.cpp` moves bytes, `mosquittoClient.cpp` is what the session asks for.
struct MosquittoClient::State
{
    enum Stage { DIALLING, GREETING, OPEN, OVER };

    /// @throws TlsError; std::runtime_error: no CONNECT can hold the client id or the user
    State(const ClientSettings& settings, const BrokerAddress& server);

    // What the library tells.

    void setCallbacks() const;
    static State& of(void* state)
    {
        return *static_cast<State*>(state);
    }
    static void answered(mosquitto*, void* state, int code);
    static void disconnected(mosquitto*, void* state, int code);
    static void subscribed(mosquitto*, void* state, int number, int count, const int* granted);
    static void published(mosquitto*, void* state, int number);
    static void received(mosquitto*, void* state, const mosquitto_message* message);
    static void logged(mosquitto*, void* state, int level, const char* text);
    QString reasonOf(int code, int systemError) const;

    // The connection.

    void identify(const ClientSettings& settings);
    void begin(const BrokerAddress& server, const QString& address, const BrokerMessage& will);
    void dial();
    void read();
    void flush();
    int socket() const
    {
        return mosquitto_socket(client.get());
    }
    bool isShakingHands() const;
    void noticeDeadPeers() const;

    /// The library tells most failures by disconnected(), but not all.
    void check(int failure);

    /// What the library does not take for want of memory, or for another reason, must not be
    /// missing between what went before and what follows.
    /// @return false: the session has ended
    bool isTaken(int failure);

    /// The first reason counts.
    void end(const QString& reason);

    int nextRequest();

    /// A SUBSCRIBE without its SUBACK.
    struct Asked
    {
        int request = 0;
        int topics = 0;
    };

    struct DestroyClient
    {
        void operator()(mosquitto* gone) const
        {
            mosquitto_destroy(gone);
        }
    };

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
    std::map<int, Asked> ungranted;    ///< by number
};

#endif
