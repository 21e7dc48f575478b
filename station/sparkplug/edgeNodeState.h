#ifndef EDGE_NODE_STATE_H
#define EDGE_NODE_STATE_H

#include "broker/serverWalk.h"
#include "sparkplug/edgeCommands.h"
#include "sparkplug/edgeData.h"
#include "sparkplug/edgeHistory.h"
#include "sparkplug/edgeNode.h"
#include "sparkplug/hostState.h"

#include <map>

// What the session tells (edgeNews.cpp) is noted in `news`; turn() acts on it. So nothing is sent
// or ended from inside a callback.
//
//     PAUSING -> CONNECTING -> SUBSCRIBING -> BORN -> LEAVING -> PAUSING, or OVER
//
// Invariants:
// - The first message of a session is its NBIRTH, and nothing follows its NDEATH.
// - A message's seq is given out in the step that puts it into the socket's queue.
// - No DATA goes out while births are due.
// - A number of the birth sequence is taken for each CONNECT, and given back only when no byte of
//   it left.
struct EdgeNode::State
{
    enum Step { PAUSING, CONNECTING, SUBSCRIBING, BORN, LEAVING, OVER };

    /// What happened since the last turn.
    struct News
    {
        bool isAccepted = false;
        std::optional<bool> granted;
        HostState::News host = HostState::NOTHING; ///< what counts last; never OLD
        bool isHostOld = false;                    ///< a STATE came that does not count
        bool isDeathDelivered = false;
    };

    State(const EdgeNodeSettings& given, BrokerSession& brokerSession, BirthSequence& numbers,
          DeliveryLedger& deliveryLedger, PlantCommands& plantCommands,
          const StationClock& stationClock);

    void become(Step next, const QString& why);
    qint64 turn();
    void doStep();
    void look();
    qint64 nextTurn() const;

    void begin();
    void subscribe();
    void awaitBirth();
    QString hostTrouble() const;
    void giveUp(const QString& reason);
    void over(const QString& reason, bool connectSent, bool isServerLeft);

    void bear();
    void sendBirths();
    void work();
    void tick();
    void lookForMark();
    void tellSent();
    void sendMark();
    void tellFigures();
    EdgeStation* tellerOf(const EdgeCommands::Outcome& outcome);
    void tellOutcomes();
    void tellLastOutcomes();
    void tellOutcome(const EdgeCommands::Outcome& outcome);
    void sayFarewell();
    void part();

    void take(const Sample& sample);
    void receive(const BrokerMessage& message);
    void receiveCommand(const BrokerMessage& message);
    qint64 dropped() const; ///< rows that no host will ever have
    qint64 behind() const;  ///< rows that the broker does not surely have
    void noteProof();

    const EdgeNodeSettings settings;
    BrokerSession& session;
    BirthSequence& sequence;
    DeliveryLedger& ledger;
    const StationClock& clock;

    const EdgeTopics topics;
    ServerWalk walk;
    HostState host;
    EdgeMetrics metrics;
    NodeMetrics node;
    EdgePublisher publisher;
    EdgeData data;
    EdgeHistory history;
    EdgeCommands commands;

    Step step = PAUSING;
    qint64 since = 0;    ///< of `step`, ms since 1970
    qint64 deadline = 0; ///< of `step`, steady
    qint64 lookAt = 0;   ///< when the ledger looks at the history again, steady
    QString trouble;
    News news;
    bool isStopping = false;
    QString server; ///< of the present or last session

    // Of the present session.
    quint8 birthSequence = 0;
    int subscribeRequest = 0, deathRequest = 0;
    bool areBirthsDue = false;
    bool isLeft = false;                       ///< LEAVING: because the primary host is offline
    qint64 goodAt = 0, tickAt = 0, markAt = 0; ///< steady
    qint64 provenAt = 0;                       ///< see noteProof(), steady
    std::map<int, DeliveryLedger::Mark> marks; ///< that wait for their acknowledgement, by request

    quint64 lastNumber = 0; ///< of the rows that came
    quint64 sessions = 0;
};

#endif
