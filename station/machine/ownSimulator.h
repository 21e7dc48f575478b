#ifndef OWN_SIMULATOR_H
#define OWN_SIMULATOR_H

#include "links/simulatedPlc.h"

#include <functional>

/// The simulated PLC of a link that leads to none of the user's: the station starts it, and starts
/// another when it has ended.
///
///     STARTED ---+--- open() ------------> OPENED --- it ends; open() ---+
///                |                            ^                          |
///                | cannot be opened           | another is opened        |
///                v                            |                          v
///             USELESS ------- open() ---------+<-------------------------+
///                ^                            |
///                +--- none starts, or can be opened
///
/// The end is told once, when open() is called behind it. The link makes the pauses between the
/// calls of open(), and lets them grow.
///
/// The main thread constructs it, and destroys it behind the end of the link's thread. The link's
/// thread calls open().
class OwnSimulator
{
public:
    /// @param tellEnd  called by the link's thread
    /// @throws LinkError when the first one does not start
    OwnSimulator(const QString& program, const QStringList& arguments,
                 std::function<void()> tellEnd);

    /// @throws LinkError
    std::unique_ptr<Link> open(const LineSettings& line);

private:
    enum State { STARTED, OPENED, USELESS };

    const QString m_program;
    const QStringList m_arguments;
    const std::function<void()> m_tellEnd;

    // Used by the link's thread only, and by the destructor behind its end.
    std::unique_ptr<SimulatedPlc> m_plc; ///< null: none is started
    State m_state = STARTED;
};

#endif
