#include "exchange/replyRecogniser.h"

#include <gtest/gtest.h>

#include <ostream>
#include <random>
#include <string>

// Frames of the MODBUS Application Protocol V1.1b3 (6.3, 6.6, 7); checksums by pymodbus'
// computeCRC.

namespace {

QByteArray fromHex(const char* text)
{
    return QByteArray::fromHex(text);
}

const QByteArray READ_REQUEST = fromHex("01030BB80002460A");
const QByteArray READ_REPLY = fromHex("010304123456788107");
const QByteArray WRITE_REQUEST = fromHex("01060BB904D2D896");
const QByteArray REFUSAL = fromHex("018302C0F1");

RECOGNISED read(const QByteArray& received)
{
    return recogniseReply(received, READ_REQUEST, 9);
}

/// The reply must come out of the bytes at the moment when its last byte is there, not before.
void expectFound(const QByteArray& ahead, const QByteArray& reply, const QByteArray& behind,
                 const QByteArray& request)
{
    const QByteArray all = ahead + reply + behind;
    for (int length = 0; length <= all.size(); ++length) {
        const RECOGNISED found = recogniseReply(all.left(length), request, int(reply.size()));
        const bool complete = length >= ahead.size() + reply.size();
        ASSERT_EQ(complete ? reply : QByteArray(), found.reply)
            << ahead.toHex().toStdString() << " ahead, " << length << " bytes";
        ASSERT_EQ(0, found.exceptionCode);
    }
}

} // namespace

TEST(ReplyRecogniser, AReplyIsFoundByteByByteBehindAnyStrayByte)
{
    for (int stray = 0; stray < 256; ++stray) {
        const QByteArray ahead(1, static_cast<char>(stray));
        expectFound(ahead, READ_REPLY, QByteArray(), READ_REQUEST);
        expectFound(ahead, WRITE_REQUEST, QByteArray(), WRITE_REQUEST);
    }
}

TEST(ReplyRecogniser, AReplyIsFoundBehindAnyTwoStrayBytes)
{
    for (int stray = 0; stray < 65536; ++stray) {
        QByteArray ahead(2, static_cast<char>(stray >> 8));
        ahead[1] = static_cast<char>(stray & 0xFF);
        ASSERT_EQ(READ_REPLY, read(ahead + READ_REPLY).reply) << stray;
    }
}

TEST(ReplyRecogniser, AReplyIsFoundBetweenThreeStrayBytesAndThree)
{
    std::mt19937 random(20);
    for (int i = 0; i < 2000; ++i) {
        QByteArray noise(6, '\0');
        for (int k = 0; k < noise.size(); ++k)
            noise[k] = static_cast<char>(random() & 0xFFu);
        expectFound(noise.left(3), READ_REPLY, noise.mid(3), READ_REQUEST);
        expectFound(noise.left(3), WRITE_REQUEST, noise.mid(3), WRITE_REQUEST);
    }
}

TEST(ReplyRecogniser, ARefusalIsNamedByItsCode)
{
    const RECOGNISED found = read(fromHex("FF") + REFUSAL);
    EXPECT_EQ(REFUSAL, found.reply);
    EXPECT_EQ(2, found.exceptionCode);
    EXPECT_STREQ("illegal address", exceptionText(found.exceptionCode));
}

TEST(ReplyRecogniser, EveryExceptionCodeHasWords)
{
    for (int code = 0; code < 256; ++code)
        EXPECT_GT(std::string(exceptionText(code)).size(), 4u) << code;
    EXPECT_STREQ("device busy", exceptionText(6));
}

struct OtherAnswer
{
    const char* what;
    const char* frame;
};

std::ostream& operator<<(std::ostream& out, const OtherAnswer& answer)
{
    return out << answer.what;
}

class ReplyRecogniserOtherAnswers : public testing::TestWithParam<OtherAnswer>
{
};

TEST_P(ReplyRecogniserOtherAnswers, AreNotTaken)
{
    EXPECT_TRUE(read(fromHex(GetParam().frame)).reply.isEmpty()) << GetParam().what;
}

INSTANTIATE_TEST_SUITE_P(, ReplyRecogniserOtherAnswers,
                         testing::Values(OtherAnswer{"nothing", ""}, OtherAnswer{"one byte", "01"},
                                         OtherAnswer{"another station", "02030412345678B207"},
                                         OtherAnswer{"another function", "0104041234567880B0"},
                                         OtherAnswer{"another length", "0103020020B99C"},
                                         OtherAnswer{"a changed byte", "010304123456798107"},
                                         OtherAnswer{"a changed checksum", "010304123456788106"},
                                         OtherAnswer{"a refusal of another function", "018402C2C1"},
                                         OtherAnswer{"an echo of a write", "01060BB904D2D896"}));

TEST(ReplyRecogniser, AnEchoOfAnotherWriteIsNotTaken)
{
    const QByteArray other = fromHex("01060BB8000A");
    EXPECT_TRUE(recogniseReply(other + fromHex("8BCC"), WRITE_REQUEST, 8).reply.isEmpty());
}

TEST(ReplyRecogniser, AFrameIsFoundByItsBeginAndLengthAlone)
{
    const QByteArray signature = replySignature(READ_REQUEST, 9);
    EXPECT_EQ(2, replyPosition(fromHex("5501") + READ_REPLY, signature, 9));
    EXPECT_EQ(5, replyPosition(REFUSAL + READ_REPLY, signature, 9));
    EXPECT_EQ(-1, replyPosition(READ_REPLY.left(8), signature, 9));
    EXPECT_EQ(-1, replyPosition(WRITE_REQUEST, signature, 9));
}
