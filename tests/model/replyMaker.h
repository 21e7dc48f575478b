#ifndef REPLY_MAKER_H
#define REPLY_MAKER_H

#include "calls.h"
#include "randomSource.h"

#include <deque>

namespace model {

/// The far end of the line: turns the kind of a reply into bytes that fit the request in flight.
class ReplyMaker
{
public:
    /// The requests as the host gets them.
    void note(const Frame& frame);

    Bytes reply(const ReplyCall& call) const;

    /// Whether `bytes`, made for `call`, are what the kind says to the request noted last: a
    /// station can be replaced by itself, and a late reply can be the one that is due.
    bool isOfItsKind(const ReplyCall& call, const Bytes& bytes) const;

    /// Counts the reply if it is.
    void count(const ReplyCall& call, const Bytes& bytes) const;

private:
    size_t ageOf(const ReplyCall& call, RandomSource& random) const;
    bool answersAnOlderRequest(const ReplyCall& call) const;

    std::deque<Frame> m_frames; ///< the latest is the first
};

} // namespace model

#endif
