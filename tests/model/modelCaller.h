#ifndef MODEL_CALLER_H
#define MODEL_CALLER_H

#include "calls.h"
#include "driverModel.h"
#include "outcome.h"

namespace model {

/// Makes a host's calls of the model.
class ModelCaller
{
public:
    ModelCaller();

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

    bool isFramePending() const
    {
        return m_model.isFramePending();
    }

    const HostMemory& memory() const
    {
        return m_memory;
    }

private:
    DriverModel m_model;
    HostMemory m_memory;
};

} // namespace model

#endif
