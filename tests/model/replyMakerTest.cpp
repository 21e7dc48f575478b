// Which replies count as what their kind says.

#include "replyMaker.h"

#include <gtest/gtest.h>

namespace {

enum { SEEDS = 5000 };

using model::Bytes;
using model::ReplyKind;

/// A write of one word, which its reply repeats; MODBUS Application Protocol V1.1b3, 6.6.
model::Frame writeOf(const Bytes& request)
{
    model::Frame frame;
    frame.bytes = request;
    frame.recvLen = 8;
    return frame;
}

/// A read of registers, the same, 6.3.
model::Frame readOf(const Bytes& request, int registers)
{
    model::Frame frame;
    frame.bytes = request;
    frame.recvLen = 5 + 2 * registers;
    return frame;
}

const Bytes EARLIER = {17, 6, 0, 1, 0, 3, 154, 155};
const Bytes LATEST = {1, 6, 11, 184, 0, 5, 203, 200};

struct Counted
{
    int times = 0;
    int wrongly = 0; ///< against `expected`
};

/// How many of the replies of many seeds count, and whether they are those that `expected` is for.
Counted counted(const model::ReplyMaker& maker, ReplyKind kind, bool (*expected)(const Bytes&))
{
    Counted all;
    for (unsigned seed = 0; seed < SEEDS; ++seed) {
        const model::ReplyCall call = {kind, seed};
        const Bytes bytes = maker.reply(call);
        const bool counts = maker.isOfItsKind(call, bytes);
        if (counts) ++all.times;
        if (counts != expected(bytes)) ++all.wrongly;
    }
    return all;
}

} // namespace

TEST(ReplyKind, IsLateOnlyWhenItAnswersAnEarlierRequest)
{
    model::ReplyMaker maker;
    maker.note(writeOf(EARLIER));
    maker.note(writeOf(LATEST));
    const Counted late =
        counted(maker, ReplyKind::LATE, [](const Bytes& bytes) { return bytes == EARLIER; });
    EXPECT_EQ(late.wrongly, 0);
    EXPECT_GT(late.times, 0);
    EXPECT_LT(late.times, int(SEEDS));
}

TEST(ReplyKind, IsNotLateWhenTheEarlierRequestIsAskedAgain)
{
    // Reads, as their replies differ from each other though the request is the same.
    const model::Frame again = readOf({1, 3, 0, 0, 0, 1, 132, 10}, 1);
    model::ReplyMaker maker;
    maker.note(again);
    maker.note(readOf({17, 3, 0, 107, 0, 3, 118, 135}, 3));
    maker.note(again);
    const Counted late =
        counted(maker, ReplyKind::LATE, [](const Bytes& bytes) { return bytes[0] == 17; });
    EXPECT_EQ(late.wrongly, 0);
    EXPECT_GT(late.times, 0);
}

TEST(ReplyKind, IsOfAnotherStationOnlyWhenTheStationDiffers)
{
    model::ReplyMaker maker;
    maker.note(writeOf(LATEST));
    const Counted strange = counted(maker, ReplyKind::OTHER_STATION,
                                    [](const Bytes& bytes) { return bytes[0] != LATEST[0]; });
    EXPECT_EQ(strange.wrongly, 0);
    EXPECT_GT(strange.times, 0);
    EXPECT_LT(strange.times, int(SEEDS));
}

TEST(ReplyKind, IsEmptyOnlyWhereAReplyIsDue)
{
    const auto always = [](const Bytes&) { return true; };
    const auto never = [](const Bytes&) { return false; };
    model::ReplyMaker maker;
    EXPECT_EQ(counted(maker, ReplyKind::EMPTY, never).wrongly, 0);
    maker.note(writeOf(LATEST));
    EXPECT_EQ(counted(maker, ReplyKind::EMPTY, always).wrongly, 0);
    model::Frame broadcast = writeOf({0, 6, 0, 1, 0, 3, 154, 155});
    broadcast.recvLen = 0;
    maker.note(broadcast);
    EXPECT_EQ(counted(maker, ReplyKind::EMPTY, never).wrongly, 0);
    EXPECT_EQ(counted(maker, ReplyKind::GOOD, always).wrongly, 0);
}

TEST(ReplyKind, IsGoodOnlyWhereAReplyCanBe)
{
    model::Frame unsendable;
    unsendable.unsendable = true;
    model::ReplyMaker maker;
    maker.note(unsendable);
    EXPECT_EQ(counted(maker, ReplyKind::GOOD, [](const Bytes&) { return false; }).wrongly, 0);
}
