#include "sparkplug/edgeNodeState.h"
#include "wire/timeUnits.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

enum { TICK = SECOND }; ///< from look to look

const qint64 NEVER = std::numeric_limits<qint64>::max();

} // namespace

EdgeNode::State::State(const EdgeNodeSettings& given, BrokerSession& brokerSession,
                       BirthSequence& numbers, DeliveryLedger& deliveryLedger,
                       PlantCommands& plantCommands, const StationClock& stationClock)
    : settings(given),
      session(brokerSession),
      sequence(numbers),
      ledger(deliveryLedger),
      clock(stationClock),
      topics(given.group, given.node),
      walk(given.servers),
      host(given.primaryHost),
      metrics(given.takesCommands),
      node(given.takesCommands, stationClock.wall()),
      publisher(topics, brokerSession, stationClock),
      data(metrics, publisher, deliveryLedger, stationClock),
      history(metrics, publisher, deliveryLedger),
      commands(metrics, plantCommands, given.takesCommands),
      since(stationClock.wall()),
      deadline(stationClock.steady())
{
}

void EdgeNode::State::become(Step next, const QString& why)
{
    step = next;
    since = clock.wall();
    trouble = why;
}

// The turns.

qint64 EdgeNode::State::turn()
{
    Step before = OVER;
    do {
        before = step;
        doStep();
    } while (step != before);
    look();
    return nextTurn();
}

void EdgeNode::State::doStep()
{
    const bool isDue = clock.steady() >= deadline;
    switch (step) {
    case PAUSING:
        if (isStopping)
            become(OVER, QString());
        else if (isDue)
            begin();
        return;
    case CONNECTING:
        if (isStopping)
            giveUp(QString());
        else if (news.isAccepted)
            subscribe();
        else if (isDue)
            giveUp(QLatin1String(NO_ANSWER));
        return;
    case SUBSCRIBING:
        return awaitBirth();
    case BORN:
        if (isStopping || news.host == HostState::OFFLINE)
            sayFarewell();
        else
            work();
        return;
    case LEAVING:
        if (news.isDeathDelivered || isDue) part();
        return;
    case OVER:
        return;
    }
}

/// The ledger has to see each turn of the history's file, with a session or without.
void EdgeNode::State::look()
{
    if (clock.steady() < lookAt) return;
    lookAt = clock.steady() + TICK;
    ledger.behind();
}

qint64 EdgeNode::State::nextTurn() const
{
    if (step == OVER) return NEVER;
    if (step != BORN) return std::min(deadline, lookAt);
    if (!session.isDrained()) return clock.steady() + TICK; // the socket tells when it takes more
    return std::min({tickAt, markAt, history.nextAt()});
}

// The way to a session.

void EdgeNode::State::begin()
{
    const std::optional<quint8> number = sequence.take();
    if (!number) {
        deadline = clock.steady() + walk.ended(false) * MILLISECOND;
        deadline = std::max(deadline, clock.steady() + SECOND);
        trouble = QLatin1String("the number of the next session cannot be stored");
        return;
    }
    birthSequence = *number;
    news = News();
    server = walk.server().text();
    deadline = clock.steady() + ANSWER_LIMIT;
    become(CONNECTING, trouble);
    session.connect(walk.server(), publisher.nodeDeath(birthSequence));
}

/// Where servers are left, the primary host's STATE has to come in the same time.
void EdgeNode::State::subscribe()
{
    QStringList wanted{topics.ofNode("NCMD")};
    if (settings.takesCommands) wanted << topics.ofDevice("DCMD", QLatin1String("+"));
    if (host.isWanted()) wanted << host.topic();
    deadline = clock.steady() + ANSWER_LIMIT;
    become(SUBSCRIBING, trouble);
    subscribeRequest = session.subscribe(wanted);
}

void EdgeNode::State::awaitBirth()
{
    if (isStopping) return giveUp(QString());
    if (news.granted == false) return giveUp(QLatin1String(REFUSAL));
    if (news.host == HostState::OFFLINE)
        return giveUp(QLatin1String("the primary host is offline"));
    if (news.granted && (!host.isWanted() || news.host == HostState::ONLINE)) return bear();
    if (deadline != NEVER && clock.steady() < deadline) return;
    if (!news.granted) return giveUp(QLatin1String(NO_GRANT));
    if (settings.servers.size() > 1) return giveUp(hostTrouble());
    trouble = hostTrouble();
    deadline = NEVER;
}

/// Why the primary host is waited for.
QString EdgeNode::State::hostTrouble() const
{
    return news.isHostOld
               ? QLatin1String("the primary host's STATE has an older time than one before it")
               : QLatin1String("nothing is known of the primary host");
}

/// Ends a session that has no births: no NDEATH is due.
void EdgeNode::State::giveUp(const QString& reason)
{
    const bool isAccepted = step == SUBSCRIBING;
    const bool isSent = isAccepted || session.isConnectSent();
    if (isAccepted)
        session.leave();
    else
        session.drop();
    over(reason, isSent, news.host == HostState::OFFLINE);
}

/// The session is over, or never came to be.
void EdgeNode::State::over(const QString& reason, bool connectSent, bool isServerLeft)
{
    if (step == BORN || step == LEAVING) ledger.ended();
    data.end();
    marks.clear();
    areBirthsDue = false;
    if (!connectSent) sequence.giveBack();
    deadline = clock.steady() + walk.ended(isServerLeft) * MILLISECOND;
    become(isStopping ? OVER : PAUSING, isStopping ? QString() : reason);
}

// What the station tells and asks.

EdgeNode::EdgeNode(const EdgeNodeSettings& settings, BrokerSession& session,
                   BirthSequence& sequence, DeliveryLedger& ledger, PlantCommands& commands,
                   const StationClock& clock)
    : m_state(new State(settings, session, sequence, ledger, commands, clock))
{
}

EdgeNode::~EdgeNode() = default;

void EdgeNode::setDevices(const std::vector<EdgeDevice>& devices)
{
    State& state = *m_state;
    if (state.step == State::BORN) state.data.owe();
    const bool isNew = state.metrics.setDevices(devices);
    if (isNew && state.step == State::BORN) state.areBirthsDue = true;
}

void EdgeNode::take(const std::vector<Sample>& samples)
{
    for (const Sample& sample : samples)
        m_state->take(sample);
}

qint64 EdgeNode::turn()
{
    return m_state->turn();
}

void EdgeNode::leave()
{
    m_state->isStopping = true;
    m_state->turn();
}

bool EdgeNode::isOver() const
{
    return m_state->step == State::OVER;
}

PlantStanding EdgeNode::standing() const
{
    const State& state = *m_state;
    PlantStanding standing;
    standing.dialect = QLatin1String("sparkplug");
    if (state.step == State::BORN)
        standing.state = PlantStanding::BORN;
    else if (state.step == State::CONNECTING || state.step == State::SUBSCRIBING)
        standing.state = PlantStanding::CONNECTING;
    standing.server = state.server;
    standing.trouble = state.trouble;
    standing.since = state.since;
    standing.behind = state.behind();
    standing.dropped = state.dropped();
    standing.sessions = state.sessions;
    standing.sent = state.data.sent();
    standing.historical = state.history.sent();
    standing.commands = state.commands.taken();
    standing.refusedCommands = state.commands.refused();
    return standing;
}
