#ifndef SET_COMMANDS_H
#define SET_COMMANDS_H

#include "plant/plantCommands.h"
#include "topics/retainedStates.h"
#include "topics/setRequest.h"
#include "values/stationClock.h"

/// The sets of the JSON dialect: it takes each, and has one result for it.
///
///     received() --- refused here ------------------+
///         |                                         v         nextResult()     delivered()
///         +--> PlantCommands::write() -- ended --> waiting ----------------> sent --------> over
///                                                   ^                         |
///                                                   +---- sessionEnded() -----+
///
/// - A retained message is old. It is never executed, and has no result: the set that it was once
///   has had its own.
/// - A result that the broker has not acknowledged is sent again in the next session.
/// - A message without a payload clears a retained set, and asks for nothing.
class SetCommands
{
public:
    enum {
        MOST_WAITING = 10000,  ///< results; then the oldest is dropped: the audit has it
        MOST_SENT = 1000,      ///< and not acknowledged; then the others wait
        LONGEST_UNKNOWN = 1000 ///< a longer topic that is no tag's has no result
    };

    SetCommands(const RetainedStates& states, PlantCommands& commands, const StationClock& clock);

    /// @param server  it came from, in words
    void received(const BrokerMessage& message, const QString& server);

    /// Empty: none waits.
    std::optional<BrokerMessage> nextResult();
    /// @param request  0: it could not go out
    void sent(int request, const BrokerMessage& result);
    void delivered(int request);
    void sessionEnded();

    /// Sets that came, and those of them that were refused, here or by the PLC.
    quint64 commands() const
    {
        return m_results->commands;
    }
    quint64 refusals() const
    {
        return m_results->refusals;
    }

private:
    struct Results
    {
        std::deque<BrokerMessage> waiting;
        std::map<int, BrokerMessage> sent; ///< by request
        quint64 commands = 0, refusals = 0;

        void put(const BrokerMessage& result);
    };

    /// A set whose topic and payload are understood, as far as they are.
    struct Asked
    {
        QString topic; ///< of the tag
        const StatedTag* tag = nullptr;
        QByteArray id;
        QString from;
    };

    void take(const Asked& asked, const SetRequest& request);
    QString problemOf(const Asked& asked, const SetRequest& request) const;
    void refuse(const Asked& asked, const QString& reason);

    const RetainedStates& m_states;
    PlantCommands& m_commands;
    const StationClock& m_clock;
    const std::shared_ptr<Results> m_results; ///< commands under way outlive this
};

#endif
