#ifndef DRIVER_CALLER_H
#define DRIVER_CALLER_H

#include "calls.h"
#include "driver/driverLibrary.h"
#include "outcome.h"

#include <QMutex>

namespace model {

/// Makes a host's calls of the real driver, and is its host: the callback and the memory.
class DriverCaller
{
public:
    explicit DriverCaller(const DriverFunctions& driver);
    ~DriverCaller();
    DriverCaller(const DriverCaller&) = delete;
    DriverCaller& operator=(const DriverCaller&) = delete;

    Outcome operator()(const IdentityCall& call);
    Outcome operator()(const SetPageCall& call);
    Outcome operator()(const CallbackCall& call);
    Outcome operator()(const InitCall& call);
    Outcome operator()(const CheckCall& call);
    Outcome operator()(const ValidityCall& call);
    Outcome operator()(const DescribeCall& call);
    Outcome operator()(const AreaListCall& call);
    Outcome operator()(const SeriesCall& call);
    Outcome operator()(const MergeCall& call);
    Outcome operator()(const OneShotCall& call);
    Outcome operator()(const RecipeCall& call);
    Outcome operator()(const NextFrameCall& call);
    Outcome operator()(const GetDataCall& call);
    Outcome operator()(const SetDataCall& call);
    Outcome operator()(const FlagCall& call);
    Outcome operator()(const FillBufferCall& call);
    Outcome reply(const Bytes& bytes);

    /// The flags as they are now, and the recipe buffer.
    const HostMemory& memory();

    /// Empty, or which of the host's things the driver left in a state that it must not.
    std::string misuse();

    /// The same for the rest of the shared block; slow, so asked once a sequence.
    std::string damage() const;

private:
    static void onChange(int context, int station, QString& name, int addr);
    Bytes valueRead(int station, const QString& area, int addr, int count) const;

    const DriverFunctions& m_driver;
    HostMemory m_memory;
    Bytes m_shared;
    QMutex m_mutex;
    bool m_isToldUnderMutex = false;
    std::vector<Notification> m_notifications;
};

} // namespace model

#endif
