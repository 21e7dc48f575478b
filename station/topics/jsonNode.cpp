#include "topics/jsonNode.h"

#include "broker/serverWalk.h"
#include "topics/setCommands.h"
#include "topics/topicFile.h"

#include <algorithm>
#include <limits>

//            pause over           CONNACK 0             SUBACK              leave()
//   PAUSING -----------> CONNECTING ------> SUBSCRIBING ------> FLOWING -----------> LEAVING
//     ^  |                 |  |               |  |   commands are     |               |
//     |  |                 |  |               |  |   not taken: at once               | PUBACK, or
//     +--|-- no, or 10 s --+--|- no, or 10 s -+--|------ lost --------+               | a second
//        +---- leave() -------+------------------+------------------------> OVER <----+
//
// - `until` is the end of the pause, or of the patience, in each state but FLOWING and OVER.
// - Only in FLOWING do states go out; results go out in LEAVING, too.
// - Behind drop() and leave() of the session nothing more is heard of it.

namespace {

/// Messages of a turn: whoever shares the thread must not wait long.
enum { MOST_OF_A_TURN = 500 };

} // namespace

struct JsonNode::State
{
    enum Step { PAUSING, CONNECTING, SUBSCRIBING, FLOWING, LEAVING, OVER };

    State(const JsonNodeSettings& its, BrokerSession& brokers, PlantCommands& plantCommands,
          const StationClock& stationClock)
        : settings(its),
          session(brokers),
          clock(stationClock),
          walk(its.servers),
          states(its.node),
          sets(states, plantCommands, stationClock),
          topicFile(its.topicFile)
    {
        states.wasPublished(topicFile.read());
        standing.dialect = QLatin1String("json");
        standing.since = clock.wall();
    }

    void become(Step next, qint64 patience);
    void tell(PlantStanding::State state);
    void connect();
    void subscribe();
    void flow();
    void pause(const QString& reason);
    void giveUp(const char* reason);
    void act();
    bool sendResults();
    bool sendStates();
    void noteBorn();
    bool send(const BrokerMessage& message, int& request);
    qint64 nextTurn(bool isMoreDue) const;

    const JsonNodeSettings settings;
    BrokerSession& session;
    const StationClock& clock;
    ServerWalk walk;
    RetainedStates states;
    SetCommands sets;
    TopicFile topicFile; ///< holds what the broker may hold, ahead of each message
    Step step = PAUSING;
    qint64 until = 0;                   ///< on the steady clock
    qint64 bornAt = 0;                  ///< on the steady clock; 0: the states are not out yet
    int subscription = 0, farewell = 0; ///< requests
    int left = 0;                       ///< messages that this turn may still send
    PlantStanding standing;
};

void JsonNode::State::become(Step next, qint64 patience)
{
    step = next;
    until = clock.steady() + patience;
}

void JsonNode::State::tell(PlantStanding::State state)
{
    if (standing.state != state) standing.since = clock.wall();
    standing.state = state;
}

void JsonNode::State::connect()
{
    become(CONNECTING, ANSWER_LIMIT);
    standing.server = walk.server().text();
    tell(PlantStanding::CONNECTING);
    session.connect(walk.server(), states.status(false));
}

void JsonNode::State::subscribe()
{
    become(SUBSCRIBING, ANSWER_LIMIT);
    subscription = session.subscribe({states.topics().sets()});
}

void JsonNode::State::flow()
{
    become(FLOWING, 0);
    states.sendAll();
}

/// The session is over.
void JsonNode::State::pause(const QString& reason)
{
    sets.sessionEnded();
    if (step == LEAVING) return become(OVER, 0);
    const qint64 lived = clock.steady() - bornAt;
    if (bornAt != 0 && lived >= qint64(ServerWalk::GOOD_SESSION_MS) * MILLISECOND) walk.wasGood();
    bornAt = 0;
    standing.trouble = reason;
    tell(PlantStanding::PAUSING);
    become(PAUSING, walk.ended(false) * MILLISECOND);
}

void JsonNode::State::giveUp(const char* reason)
{
    session.drop();
    pause(QLatin1String(reason));
}

/// Does what time has made due.
void JsonNode::State::act()
{
    if (clock.steady() < until) return;
    switch (step) {
    case PAUSING:
        return connect();
    case CONNECTING:
        return giveUp(NO_ANSWER);
    case SUBSCRIBING:
        return giveUp(NO_GRANT);
    case LEAVING: // nobody knows what the broker has: its will says that the station is gone
        session.drop();
        return become(OVER, 0);
    case FLOWING:
    case OVER:
        return;
    }
}

/// @return false: no more can go out in this turn
bool JsonNode::State::send(const BrokerMessage& message, int& request)
{
    request = session.publish(message);
    --left;
    if (request != 0) ++standing.sent;
    return request != 0;
}

bool JsonNode::State::sendResults()
{
    while (left > 0 && session.isDrained()) {
        const std::optional<BrokerMessage> result = sets.nextResult();
        if (!result) return true;
        int request = 0;
        const bool isSent = send(*result, request);
        sets.sent(request, *result);
        if (!isSent) return false;
    }
    return false;
}

void JsonNode::State::noteBorn()
{
    standing.trouble.clear();
    tell(PlantStanding::BORN);
    bornAt = clock.steady();
}

/// What cannot go out is lost with the session: the next one begins with everything.
bool JsonNode::State::sendStates()
{
    while (left > 0 && session.isDrained()) {
        const std::optional<BrokerMessage> message = states.next();
        if (!message) return true;
        int request = 0;
        if (!send(*message, request)) return false;
        states.sent(request, *message);
        if (states.isStatusOut() && standing.state != PlantStanding::BORN) noteBorn();
    }
    return false;
}

/// Behind an undrained socket the session's next event calls.
qint64 JsonNode::State::nextTurn(bool isMoreDue) const
{
    if (isMoreDue && session.isDrained()) return clock.steady();
    const bool isWaiting = step != FLOWING && step != OVER;
    return isWaiting ? until : std::numeric_limits<qint64>::max();
}

JsonNode::JsonNode(const JsonNodeSettings& settings, BrokerSession& session,
                   PlantCommands& commands, const StationClock& clock)
    : m_state(std::make_unique<State>(settings, session, commands, clock))
{
}

JsonNode::~JsonNode() = default;

void JsonNode::setDevices(const std::vector<EdgeDevice>& devices)
{
    m_state->states.setDevices(devices);
    m_state->topicFile.write(m_state->states.topicsAtBroker());
}

void JsonNode::take(const std::vector<Sample>& samples)
{
    for (const Sample& sample : samples)
        m_state->states.take(sample);
}

qint64 JsonNode::turn()
{
    State& state = *m_state;
    state.act();
    state.left = MOST_OF_A_TURN;
    const bool speaks = state.step == State::FLOWING || state.step == State::LEAVING;
    bool isAllOut = !speaks || state.sendResults();
    if (isAllOut && state.step == State::FLOWING) isAllOut = state.sendStates();
    return state.nextTurn(!isAllOut && state.left == 0);
}

/// The results that wait go ahead of the farewell. The acknowledgement of its last message, the
/// status, is awaited.
void JsonNode::leave()
{
    State& state = *m_state;
    const State::Step before = state.step;
    if (before == State::LEAVING || before == State::OVER) return;
    state.become(State::OVER, 0);
    if (before == State::CONNECTING) state.session.drop();
    if (before == State::SUBSCRIBING) state.session.leave();
    if (before != State::FLOWING) return;
    state.left = SetCommands::MOST_WAITING;
    state.sendResults();
    state.become(State::LEAVING, FAREWELL_LIMIT);
    for (const BrokerMessage& message : state.states.farewell())
        state.send(message, state.farewell);
}

bool JsonNode::isOver() const
{
    return m_state->step == State::OVER;
}

PlantStanding JsonNode::standing() const
{
    PlantStanding standing = m_state->standing;
    standing.commands = m_state->sets.commands();
    standing.refusedCommands = m_state->sets.refusals();
    return standing;
}

void JsonNode::connected()
{
    if (m_state->step != State::CONNECTING) return;
    ++m_state->standing.sessions;
    if (m_state->settings.takesCommands)
        m_state->subscribe();
    else
        m_state->flow();
}

void JsonNode::ended(const QString& reason, bool connectSent)
{
    Q_UNUSED(connectSent);
    const State::Step step = m_state->step;
    if (step != State::PAUSING && step != State::OVER) m_state->pause(reason);
}

void JsonNode::subscribed(int request, bool isGranted)
{
    if (m_state->step != State::SUBSCRIBING || request != m_state->subscription) return;
    if (isGranted) return m_state->flow();
    m_state->session.leave();
    m_state->pause(QLatin1String(REFUSAL));
}

void JsonNode::delivered(int request)
{
    State& state = *m_state;
    state.sets.delivered(request);
    if (state.states.delivered(request)) state.topicFile.write(state.states.topicsAtBroker());
    if (state.step != State::LEAVING || request != state.farewell) return;
    state.session.leave();
    state.become(State::OVER, 0);
}

void JsonNode::received(const BrokerMessage& message)
{
    const bool isOpen = m_state->step == State::SUBSCRIBING || m_state->step == State::FLOWING;
    if (isOpen && m_state->settings.takesCommands)
        m_state->sets.received(message, m_state->standing.server);
}
