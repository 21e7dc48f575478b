#ifndef MOSQUITTO_SESSION_H
#define MOSQUITTO_SESSION_H

#include "broker/hostLookup.h"
#include "broker/mosquittoClient.h"
#include "values/stationClock.h"

#include <map>

/// A broker's session by the library of Mosquitto, driven by the thread that uses it: wait for
/// awaited() until due(), then call drive().
///
///              connect()            an address          it is no good: the next one
///     CLOSED ------------> LOOKING ------------> TRYING ---+
///        ^                    |                   |    ^---+
///        +--- leave(), drop() +--- no address ----+--- ended --> CLOSED, ended()
///
/// The listener is called by drive() alone. It may call everything here but drive(): what happened
/// on a session that it gives up is forgotten.
///
/// Once the TCP connection to an address is made, no other address is tried: the will holds what
/// only one CONNECT may hold. An address that does not answer has 3 s, unless it is the last one:
/// that one has the patience of the listener. The next session tries it behind the others: however
/// many are silent, each one has its turn.
///
/// A session that nobody drove for one and a half keep-alives, because the machine slept or the
/// process was stopped, is over for the broker. It ends, and what the broker had sent before is not
/// told: nobody wants an old command executed.
///
/// The lookup of the host's name runs in a thread of its own. One that is given up serves the next
/// session with that host, unless its answer may be old: so a host has one thread however long the
/// servers of names are silent, and slow ones are waited for over several tries.
class MosquittoSession : public BrokerSession
{
public:
    MosquittoSession(ClientSettings settings, const StationClock& clock,
                     HostLookup::Resolve resolve = HostLookup::bySystem);
    ~MosquittoSession() override;

    /// Ahead of the first connect(). The listener outlives the session.
    void setListener(SessionListener& listener);

    /// What to wait for; its descriptor is negative when there is nothing.
    pollfd awaited() const;

    /// When to call drive() at the latest, on the steady clock, microseconds.
    qint64 due() const;

    /// @param found  of the poll of awaited()
    void drive(short found);

    void connect(const BrokerAddress& server, const BrokerMessage& will) override;
    bool isConnectSent() const override;
    int subscribe(const QStringList& topics) override;
    int publish(const BrokerMessage& message) override;
    bool isDrained() const override;
    void leave() override;
    void drop() override;

private:
    struct GivenUp
    {
        std::unique_ptr<HostLookup> lookup;
        qint64 at = 0; ///< steady clock, microseconds
    };

    std::unique_ptr<HostLookup> lookupOf(const QString& host);
    void look();
    void putSilentLast();
    void noteSilence();
    void tryNext();
    bool isNextDue() const;
    void lookAfter();
    void noteSleep();
    void tellEvents();
    void tell(const ClientEvent& event);
    void tellEnd(const QString& reason);
    void close();

    const ClientSettings m_settings;
    const StationClock& m_clock;
    const HostLookup::Resolve m_resolve;
    SessionListener* m_listener = nullptr;
    BrokerAddress m_server;
    BrokerMessage m_will;
    std::unique_ptr<HostLookup> m_lookup;      ///< only in LOOKING
    std::map<QString, GivenUp> m_givenUp;      ///< by host
    QStringList m_addresses;                   ///< that were not tried yet
    QString m_address;                         ///< of m_client
    std::map<QString, QStringList> m_silent;   ///< addresses that did not answer, by host
    std::unique_ptr<MosquittoClient> m_client; ///< only in TRYING
    bool m_isConnectSent = false;              ///< by a client that is gone
    QString m_failure;                         ///< why there is no client; not empty: to be told
    qint64 m_dialledAt = 0;                    ///< steady clock, microseconds
    qint64 m_lookAfterAt = 0;                  ///< steady clock, microseconds
    qint64 m_drivenAt = 0;                     ///< the last time, steady clock, microseconds
};

#endif
