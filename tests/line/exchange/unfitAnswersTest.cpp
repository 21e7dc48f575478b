#include "exchangeMachineFixture.h"

// What the end of an exchange says of the bytes that came in place of an answer.

namespace {

const char* const NOISE = " with a wrong checksum: noise, or another baud rate or parity";

} // namespace

class UnfitAnswersTest : public InStepTest
{
protected:
    UnfitAnswersTest() : InStepTest(ECHO_ABSENT) {}

    /// Each frame of the attempt gets these bytes in place of an answer.
    /// @return the description in the request's end
    std::string endWith(const QByteArray& bytes)
    {
        ended.clear();
        ask(READ_A);
        while (ends().empty()) {
            come(bytes);
            if (nextSent().isEmpty()) break;
        }
        EXPECT_EQ(Ends{END_UNUSABLE}, ends());
        return last().unfit.toStdString();
    }
};

TEST_F(UnfitAnswersTest, AnswerOfAnotherStationIsNamed)
{
    // 3 registers; the checksum is worked out bit by bit.
    EXPECT_EQ("an answer of another station, 9", endWith(answerTo(readOf(3000, 3, 9))));
}

TEST_F(UnfitAnswersTest, EchoOfALinkWithoutEchoIsNamed)
{
    ask(READ_A);
    come(sent);
    EXPECT_TRUE(nextSent().isEmpty() || isFence);
    for (int i = 0; i < 10 && ends().empty(); ++i) {
        come(sent);
        nextSent();
    }
    EXPECT_EQ("the request itself came back: an echoing adapter", last().unfit.toStdString());
}

TEST_F(UnfitAnswersTest, NoiseIsCountedForEachFrameByItself)
{
    EXPECT_EQ(std::string("7 bytes") + NOISE, endWith(noise(7)));
}

// The fence's answer counts as bytes, so the request is END_UNUSABLE. The noise was the exchange's
// before.
TEST_F(UnfitAnswersTest, DescriptionDoesNotSurviveItsExchange)
{
    endWith(noise(7));
    ended.clear();
    ask(READ_B);
    ASSERT_TRUE(isFence);
    answer();
    ASSERT_EQ(READ_B, nextSent());
    nextSent();
    ASSERT_EQ(Ends{END_UNUSABLE}, ends());
    EXPECT_TRUE(last().unfit.isEmpty()) << last().unfit.toStdString();
}

TEST_F(UnfitAnswersTest, LineThatIsNeverQuietIsNamed)
{
    ended.clear();
    machine.received(noise(), now);
    machine.start(READ_A, false, now);
    chatterUntilEnded(now);
    ASSERT_EQ(Ends{END_UNUSABLE}, ends());
    EXPECT_EQ("the line is never quiet", last().unfit.toStdString());
}

TEST_F(UnfitAnswersTest, AnsweredExchangeHasNoDescription)
{
    ask(READ_A);
    come(noise(3) + answerTo(READ_A));
    ASSERT_EQ(END_ANSWERED, last().end);
    EXPECT_TRUE(last().unfit.isEmpty());
}
