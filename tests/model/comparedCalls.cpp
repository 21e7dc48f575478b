#include "comparedCalls.h"

#include "branches.h"

namespace model {

namespace {

static_assert(int(Branch::CALLED_FILL_BUFFER) - int(Branch::CALLED_SET_PAGE) + 2 ==
                  int(std::variant_size_v<Call>),
              "a branch for each call after IdentityCall");

void count(const Call& call)
{
    const auto* identity = std::get_if<IdentityCall>(&call);
    const int after = static_cast<int>(Branch::CALLED_SET_PAGE) - 1;
    const int branch = identity != nullptr ? static_cast<int>(Branch::CALLED_PROTOCOL_TYPE) +
                                                 static_cast<int>(identity->which)
                                           : after + static_cast<int>(call.index());
    reach(static_cast<Branch>(branch));
}

} // namespace

std::string ComparedCalls::run(const Call& call)
{
    count(call);
    return std::visit([this](const auto& one) { return compare(one); }, call);
}

std::string ComparedCalls::compare(const NextFrameCall& call)
{
    const Outcome expected = m_model(call);
    if (expected.frame) m_replies.note(*expected.frame);
    return compared(expected, m_driver(call));
}

std::string ComparedCalls::compare(const ReplyCall& call)
{
    const Bytes bytes = m_replies.reply(call);
    if (m_model.isFramePending()) m_replies.count(call, bytes);
    return reply(bytes);
}

std::string ComparedCalls::reply(const Bytes& bytes)
{
    const std::string text = compared(m_model.reply(bytes), m_driver.reply(bytes));
    return text.empty() ? text : "  reply " + hexText(bytes) + "\n" + text;
}

std::string ComparedCalls::compared(const Outcome& expected, const Outcome& actual)
{
    return difference(expected, actual) + difference(m_model.memory(), m_driver.memory()) +
           m_driver.misuse();
}

} // namespace model
