#ifndef COMPARED_CALLS_H
#define COMPARED_CALLS_H

#include "driverCaller.h"
#include "modelCaller.h"
#include "replyMaker.h"

namespace model {

/// Makes each call of the driver and of the model, and compares all that a host can see of it.
class ComparedCalls
{
public:
    explicit ComparedCalls(const DriverFunctions& driver) : m_driver(driver) {}

    /// Empty, or what differs.
    std::string run(const Call& call);

    /// The same of a reply whose bytes the caller chooses.
    std::string reply(const Bytes& bytes);

    /// Empty, or which part of the host's shared block the driver must not have written.
    std::string damage() const
    {
        return m_driver.damage();
    }

private:
    template <typename One> std::string compare(const One& call)
    {
        return compared(m_model(call), m_driver(call));
    }
    std::string compare(const NextFrameCall& call);
    std::string compare(const ReplyCall& call);
    std::string compared(const Outcome& expected, const Outcome& actual);

    DriverCaller m_driver;
    ModelCaller m_model;
    ReplyMaker m_replies;
};

} // namespace model

#endif
