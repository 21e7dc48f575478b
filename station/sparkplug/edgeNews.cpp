// What the session of an edge node tells.
#include "sparkplug/edgeNodeState.h"

void EdgeNode::State::receive(const BrokerMessage& message)
{
    if (step != SUBSCRIBING && step != BORN) return;
    if (message.topic != host.topic()) return receiveCommand(message);
    const HostState::News told = host.told(walk.server(), message.payload);
    news.isHostOld = news.isHostOld || told == HostState::OLD;
    if (told == HostState::NOTHING || told == HostState::OLD) return;
    const bool isLost = step == BORN && news.host == HostState::OFFLINE;
    if (!isLost) news.host = told; // a loss in a session with births is not taken back
}

/// What is retained lay at the broker before: nobody asks for it now. Who asks for births ahead of
/// the first ones gets those.
void EdgeNode::State::receiveCommand(const BrokerMessage& message)
{
    const QString from = server + QLatin1Char(' ') + message.topic;
    const QString ofDevices = topics.ofDevice("DCMD", QString());
    if (message.isRetained)
        commands.refuseMessage(QLatin1String("it was retained"), from);
    else if (message.topic == topics.ofNode("NCMD"))
        areBirthsDue = (commands.takeOfNode(message.payload, from) && step == BORN) || areBirthsDue;
    else if (message.topic.startsWith(ofDevices))
        commands.takeOfDevice(message.topic.mid(ofDevices.size()), message.payload, from);
    else
        commands.refuseMessage(QLatin1String("the topic is none of a command"), from);
}

void EdgeNode::connected()
{
    m_state->news.isAccepted = true;
}

void EdgeNode::ended(const QString& reason, bool connectSent)
{
    State& state = *m_state;
    if (state.step == State::PAUSING || state.step == State::OVER) return;
    state.over(reason, connectSent, state.step == State::LEAVING && state.isLeft);
}

void EdgeNode::subscribed(int request, bool isGranted)
{
    State& state = *m_state;
    if (state.step == State::SUBSCRIBING && request == state.subscribeRequest)
        state.news.granted = isGranted;
}

void EdgeNode::delivered(int request)
{
    State& state = *m_state;
    if (state.step == State::LEAVING && request == state.deathRequest)
        state.news.isDeathDelivered = true;
    const auto mark = state.marks.find(request);
    if (mark == state.marks.end()) return;
    state.ledger.proven(mark->second);
    state.provenAt = state.clock.steady();
    state.marks.erase(mark);
}

void EdgeNode::received(const BrokerMessage& message)
{
    m_state->receive(message);
}
