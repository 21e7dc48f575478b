#ifndef REPLY_MAKER_H
#define REPLY_MAKER_H

#include "calls.h"

#include <deque>
#include <optional>

namespace model {

/// The far end of the line: turns the kind of a reply into bytes that fit the request in flight.
class ReplyMaker
{
public:
    /// The requests as the host gets them.
    void note(const Frame& frame);

    Bytes reply(const ReplyCall& call) const;

private:
    std::deque<Frame> m_frames; ///< the latest is the first
};

} // namespace model

#endif
