#include "wire/replyFrames.h"

#include "orderlyPeer.h"

#include <gtest/gtest.h>

#include <ostream>
#include <random>
#include <string>

// Frames of the MODBUS Application Protocol V1.1b3 (6.3 to 6.6, 6.11, 6.12, 7); checksums by
// pymodbus' computeCRC, or worked out by frameWith().

namespace {

QByteArray fromHex(const char* text)
{
    return QByteArray::fromHex(text);
}

QByteArray frame(const char* text)
{
    return frameWith(fromHex(text));
}

const QByteArray READ_REQUEST = fromHex("01030BB80002460A");
const QByteArray READ_REPLY = fromHex("010304123456788107");
const QByteArray WRITE_REQUEST = fromHex("01060BB904D2D896");
const QByteArray REFUSAL = fromHex("018302C0F1");

QByteArray read(const QByteArray& received)
{
    return replyTo(READ_REQUEST, received);
}

/// The reply must be found as soon as its last byte is there, and not before.
void expectFound(const QByteArray& ahead, const QByteArray& reply, const QByteArray& behind,
                 const QByteArray& request)
{
    const QByteArray all = ahead + reply + behind;
    for (int length = 0; length <= all.size(); ++length) {
        const bool complete = length >= ahead.size() + reply.size();
        ASSERT_EQ(complete ? reply : QByteArray(), replyTo(request, all.left(length)))
            << ahead.toHex().toStdString() << " ahead, " << length << " bytes";
    }
}

struct Exchange
{
    const char* name;
    const char* request;
    const char* answer;
};

void PrintTo(const Exchange& one, std::ostream* out)
{
    *out << one.name;
}

std::string nameOf(const testing::TestParamInfo<Exchange>& named)
{
    return named.param.name;
}

} // namespace

TEST(ReplyTo, FindsAReplyBehindAnyStrayByte)
{
    for (int stray = 0; stray < 256; ++stray) {
        const QByteArray ahead(1, static_cast<char>(stray));
        expectFound(ahead, READ_REPLY, QByteArray(), READ_REQUEST);
        expectFound(ahead, WRITE_REQUEST, QByteArray(), WRITE_REQUEST);
    }
}

TEST(ReplyTo, FindsAReplyBehindAnyTwoStrayBytes)
{
    for (int stray = 0; stray < 65536; ++stray) {
        QByteArray ahead(2, static_cast<char>(stray >> 8));
        ahead[1] = static_cast<char>(stray & 0xFF);
        ASSERT_EQ(READ_REPLY, read(ahead + READ_REPLY)) << stray;
    }
}

TEST(ReplyTo, FindsAReplyBetweenThreeStrayBytesOnEachSide)
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

TEST(ReplyTo, FindsARefusal)
{
    EXPECT_EQ(REFUSAL, read(fromHex("FF") + REFUSAL));
}

TEST(ReplyTo, TakesTheFirstOfTwoReplies)
{
    const QByteArray other = frame("01030400010002");
    EXPECT_EQ(READ_REPLY, read(READ_REPLY + other));
    EXPECT_EQ(other, read(other + READ_REPLY));
}

TEST(ReplyTo, FindsAReplyBehindTheReplyToAnotherRequest)
{
    EXPECT_EQ(READ_REPLY, read(frame("0103020001") + WRITE_REQUEST + READ_REPLY));
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

class OtherAnswers : public testing::TestWithParam<OtherAnswer>
{
};

TEST_P(OtherAnswers, AreNoReplyToTheRequest)
{
    EXPECT_TRUE(read(fromHex(GetParam().frame)).isEmpty()) << GetParam().what;
}

INSTANTIATE_TEST_SUITE_P(Each, OtherAnswers,
                         testing::Values(OtherAnswer{"nothing", ""}, OtherAnswer{"one byte", "01"},
                                         OtherAnswer{"another station", "02030412345678B207"},
                                         OtherAnswer{"another function", "0104041234567880B0"},
                                         OtherAnswer{"another length", "0103020020B99C"},
                                         OtherAnswer{"a changed byte", "010304123456798107"},
                                         OtherAnswer{"a changed checksum", "010304123456788106"},
                                         OtherAnswer{"a refusal of another function", "018402C2C1"},
                                         OtherAnswer{"an echo of a write", "01060BB904D2D896"}));

TEST(ReplyTo, IgnoresTheEchoOfAnotherWrite)
{
    const QByteArray other = fromHex("01060BB8000A");
    EXPECT_TRUE(replyTo(WRITE_REQUEST, other + fromHex("8BCC")).isEmpty());
}

// Each function that the driver sends, with the answer from the protocol's document.

class Answers : public testing::TestWithParam<Exchange>
{
protected:
    const QByteArray request = frame(GetParam().request);
    const QByteArray answer = frame(GetParam().answer);
};

TEST_P(Answers, HaveTheSignatureThatTheRequestExpects)
{
    EXPECT_EQ(answerSignature(request), signatureOf(answer));
    EXPECT_EQ(answer, replyTo(request, answer));
}

TEST_P(Answers, HaveTheLengthOfTheirFrame)
{
    EXPECT_EQ(answer.size(), replyLengthAt(answer, 0));
    EXPECT_EQ(answer.size(), replyLengthAt(fromHex("55AA") + answer + fromHex("55"), 2));
    EXPECT_EQ(0, replyLengthAt(answer.left(answer.size() - 1), 0));
    EXPECT_EQ(0, replyLengthAt(fromHex("55") + answer, 0));
}

TEST_P(Answers, RefusalsHaveTheSignatureOfARefusalAlone)
{
    QByteArray refusal = request.left(1);
    refusal.append(static_cast<char>(byteOf(request, 1) + 128)).append('\x02');
    refusal = frameWith(refusal);
    EXPECT_EQ(refusal.left(2), refusalSignature(request));
    EXPECT_EQ(refusal.left(2), signatureOf(refusal));
    EXPECT_EQ(5, replyLengthAt(refusal, 0));
    EXPECT_EQ(refusal, replyTo(request, refusal));
}

INSTANTIATE_TEST_SUITE_P(
    , Answers,
    testing::Values(Exchange{"ReadHoldingRegisters", "0103006B0003", "010306022B00000064"},
                    Exchange{"ReadInputRegisters", "010400080001", "010402000A"},
                    Exchange{"WriteSingleCoil", "010500ACFF00", "010500ACFF00"},
                    Exchange{"WriteSingleRegister", "010600010003", "010600010003"},
                    Exchange{"WriteMultipleCoils", "010F0013000A02CD01", "010F0013000A"},
                    Exchange{"WriteMultipleRegisters", "01100001000204000A0102", "011000010002"}),
    nameOf);

TEST(Signature, IsStationFunctionAndByteCountForARead)
{
    EXPECT_EQ(fromHex("010304"), answerSignature(READ_REQUEST));
    EXPECT_EQ(fromHex("F704FA"), answerSignature(frame("F7040000007D")));
}

TEST(Signature, IsTheFirstSixBytesForAWrite)
{
    EXPECT_EQ(fromHex("01060BB904D2"), answerSignature(WRITE_REQUEST));
    EXPECT_EQ(fromHex("01060BB904D2"), signatureOf(WRITE_REQUEST));
}

TEST(Signature, IsTheSameForReadsOfEqualLength)
{
    EXPECT_EQ(answerSignature(frame("01030BB80002")), answerSignature(frame("01030C000002")));
}

TEST(ExceptionCode, IsGivenForRefusalsOnly)
{
    EXPECT_EQ(2, exceptionCodeOf(REFUSAL));
    EXPECT_EQ(255, exceptionCodeOf(frame("0190FF")));
    EXPECT_EQ(-1, exceptionCodeOf(READ_REPLY));
    EXPECT_EQ(-1, exceptionCodeOf(WRITE_REQUEST));
}

TEST(ReplyLength, IsFoundUpToTheLongestReply)
{
    for (int registers = 1; registers <= 125; ++registers) {
        QByteArray reply = fromHex("0103");
        reply.append(static_cast<char>(2 * registers)).append(QByteArray(2 * registers, '\x11'));
        EXPECT_EQ(2 * registers + 5, replyLengthAt(frameWith(reply), 0)) << registers;
    }
}

TEST(ReplyLength, IsZeroForAnEmptyOrOddReadReply)
{
    EXPECT_EQ(0, replyLengthAt(frame("010300"), 0));
    EXPECT_EQ(0, replyLengthAt(frame("01030112"), 0));
    EXPECT_EQ(0, replyLengthAt(frame("010303123456"), 0));
}

TEST(ReplyLength, IsZeroForFunctionsThatAreNeverSent)
{
    for (const char* text : {"0101021234", "010212", "0107FF", "0181025555", "01161234567890"})
        EXPECT_EQ(0, replyLengthAt(frame(text), 0)) << text;
}
