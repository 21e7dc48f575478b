#include "verbs/healthCheck.h"

#include "program/exitStatus.h"
#include "wire/timeUnits.h"

#include <gtest/gtest.h>

namespace {

Tag tagOf(const char* name, const char* area, const char* address, int number, Tag::Type type)
{
    Tag tag;
    tag.name = QString::fromLatin1(name);
    tag.area = QString::fromLatin1(area);
    tag.address = QString::fromLatin1(address);
    tag.number = number;
    tag.type = type;
    return tag;
}

enum { LEVEL, PUMP, SETPOINT, ODD };

std::vector<Tag> tagsOfTest()
{
    return {tagOf("level", "MW", "100", 3050, Tag::INT16), tagOf("pump", "QX", "0.5", 5, Tag::BOOL),
            tagOf("setpoint", "MW", "104", 3052, Tag::FLOAT32),
            tagOf("a=b", "MW", "110", 3055, Tag::UINT16)};
}

const DriverLibrary& driver()
{
    static const DriverLibrary library{QString::fromLatin1(KAKB_DRIVER_FILE)};
    return library;
}

Expectation expected(const char* text)
{
    return expectation(QString::fromLatin1(text), tagsOfTest(), driver());
}

std::string refusal(const char* text)
{
    try {
        expected(text);
    } catch (const VerbFailure& failure) {
        EXPECT_EQ(EXIT_USAGE, failure.status);
        return failure.what();
    }
    return "accepted";
}

TagState stateOf(const QByteArray& bytes, qint64 readAt)
{
    TagState state;
    state.bytes = bytes;
    state.readAt = readAt;
    state.good = true;
    return state;
}

QByteArray word(int value)
{
    const char bytes[] = {char(value & 0xFF), char(value >> 8 & 0xFF)};
    return QByteArray(bytes, 2);
}

/// A check of the tags above, which starts at 0, and the tags' states.
class HealthCheckTest : public testing::Test
{
protected:
    void start(const std::vector<const char*>& texts, qint64 longestBad = 0)
    {
        std::vector<Expectation> all;
        for (const char* text : texts)
            all.push_back(expected(text));
        m_check = std::make_unique<HealthCheck>(tagsOfTest(), all, longestBad, 0);
    }

    void read(int tag, int value, qint64 now)
    {
        m_states[size_t(tag)] =
            stateOf(tag == PUMP ? QByteArray(1, char(value)) : word(value), now);
        judge(now);
    }

    void turnBad(int tag, const char* trouble, qint64 now)
    {
        m_states[size_t(tag)].good = false;
        m_states[size_t(tag)].trouble = QString::fromLatin1(trouble);
        judge(now);
    }

    void judge(qint64 now, const std::vector<News::Change>& changes = {})
    {
        m_check->judge(changes, m_states, now);
    }

    void readAll(qint64 now)
    {
        m_states.assign(4, stateOf(word(0), now));
        m_states[PUMP].bytes = QByteArray(1, '\0');
        m_states[SETPOINT].bytes = word(0) + word(0);
        judge(now);
    }

    std::string failure() const
    {
        return m_check->failure() ? m_check->failure()->toStdString() : "";
    }

    std::unique_ptr<HealthCheck> m_check;
    std::vector<TagState> m_states = std::vector<TagState>(4);
};

} // namespace

TEST(Expectations, NameComparisonAndValueAreRead)
{
    const Expectation equal = expected("level=-17");
    EXPECT_EQ(size_t(LEVEL), equal.tag);
    EXPECT_EQ(Expectation::EQUAL, equal.comparison);
    EXPECT_EQ(-17, equal.value);
    EXPECT_EQ(Expectation::ABOVE, expected("setpoint>21.5").comparison);
    EXPECT_EQ(21.5, expected("setpoint>21.5").value);
    EXPECT_EQ(Expectation::BELOW, expected("level<3").comparison);
    EXPECT_EQ(1, expected("pump=true").value);
}

TEST(Expectations, AddressOfAWatchedTagIsAName)
{
    EXPECT_EQ(size_t(PUMP), expected("QX0.5=1").tag);
    EXPECT_EQ(size_t(SETPOINT), expected("MW104<5").tag);
}

TEST(Expectations, WatchedNameMayContainAComparison)
{
    EXPECT_EQ(size_t(ODD), expected("a=b=7").tag);
    EXPECT_EQ(7, expected("a=b=7").value);
}

TEST(Expectations, LimitNeedNotBeAValueOfTheType)
{
    EXPECT_EQ(1.5, expected("level>1.5").value);
    EXPECT_EQ(-1, expected("a=b>-1").value);
}

TEST(Expectations, UnusableTextsAreRefusedInWords)
{
    const struct
    {
        const char* text;
        const char* sentence;
    } rows[] = {{"level", "--until level: is not NAME=VALUE, NAME>VALUE or NAME<VALUE"},
                {"=3", "--until =3: is not NAME=VALUE, NAME>VALUE or NAME<VALUE"},
                {"", "--until : is not NAME=VALUE, NAME>VALUE or NAME<VALUE"},
                {"none=3", "--until none=3: \"none\" is no name or address of a watched tag"},
                {"MW200=3", "--until MW200=3: \"MW200\" is no name or address of a watched tag"},
                {"level=", "--until level=: the value is missing"},
                {"level=x", "--until level=x: \"x\" is no value of type int16: -32768 to 32767"},
                {"level=1.5", "--until level=1.5: 1.5 does not fit int16: -32768 to 32767"},
                {"level>=5", "--until level>=5: \"=5\" is no value of type int16: -32768 to 32767"},
                {"level>", "--until level>: the value is missing"}};
    for (const auto& unusable : rows)
        EXPECT_EQ(unusable.sentence, refusal(unusable.text));
}

TEST_F(HealthCheckTest, ReadValueMeetsTheExpectation)
{
    start({"level=17"});
    EXPECT_FALSE(m_check->isDecided());
    read(LEVEL, 16, 100);
    EXPECT_FALSE(m_check->isMet());
    read(LEVEL, 17, 200);
    EXPECT_TRUE(m_check->isMet());
    EXPECT_TRUE(m_check->isDecided());
}

TEST_F(HealthCheckTest, WithoutExpectationsNothingIsMet)
{
    start({});
    readAll(100);
    EXPECT_FALSE(m_check->isDecided());
}

TEST_F(HealthCheckTest, LimitsAreNotMetByTheLimitItself)
{
    start({"level>17"});
    read(LEVEL, 17, 100);
    EXPECT_FALSE(m_check->isMet());
    read(LEVEL, 18, 100);
    EXPECT_TRUE(m_check->isMet());
    start({"level<17"});
    read(LEVEL, 17, 100);
    EXPECT_FALSE(m_check->isMet());
    read(LEVEL, -1, 100);
    EXPECT_TRUE(m_check->isMet());
}

TEST_F(HealthCheckTest, ValueWithoutANumberIsEqualToItself)
{
    start({"setpoint=nan"});
    readAll(100);
    EXPECT_FALSE(m_check->isMet());
    // A quiet NaN by IEEE 754 is 7FC0 0000; the low word is first.
    m_states[SETPOINT] = stateOf(word(0) + word(0x7FC0), 200);
    judge(200);
    EXPECT_TRUE(m_check->isMet());
}

TEST_F(HealthCheckTest, FormatOfATagIsNotItsValue)
{
    std::vector<Tag> tags = tagsOfTest();
    tags[ODD].format = Tag::HEXADECIMAL;
    const Expectation above = expectation(QString::fromLatin1("a=b>9"), tags, driver());
    HealthCheck check(tags, {above}, 0, 0);
    m_states[ODD] = stateOf(word(16), 100);
    check.judge({}, m_states, 100);
    EXPECT_TRUE(check.isMet());
}

TEST_F(HealthCheckTest, SeveralExpectationsMustBeTrueAtOneTime)
{
    start({"level=17", "pump=1"});
    read(LEVEL, 17, 100);
    read(LEVEL, 16, 200);
    read(PUMP, 1, 200);
    EXPECT_FALSE(m_check->isMet());
    read(LEVEL, 17, 300);
    EXPECT_TRUE(m_check->isMet());
}

TEST_F(HealthCheckTest, ValueBetweenTwoLooksCounts)
{
    start({"level=17"});
    const TagState now = stateOf(word(16), 200);
    m_states[LEVEL] = now;
    judge(250, {{LEVEL, 100, stateOf(word(17), 100)}, {LEVEL, 200, now}});
    EXPECT_TRUE(m_check->isMet());
}

TEST_F(HealthCheckTest, ValueOfABadTagDoesNotCount)
{
    start({"level=17", "pump=1"});
    read(LEVEL, 17, 100);
    turnBad(LEVEL, "station 1 does not answer", 200);
    read(PUMP, 1, 300);
    EXPECT_FALSE(m_check->isMet());
    EXPECT_EQ("level=17, the tag is bad: station 1 does not answer",
              m_check->openText().toStdString());
}

TEST_F(HealthCheckTest, ValueThatWasNeverReadDoesNotCount)
{
    start({"level=0", "pump=1"});
    judge(100);
    m_states[LEVEL].bytes = word(0); // shown by a write of the host
    judge(200);
    EXPECT_FALSE(m_check->isMet());
    EXPECT_EQ("level=0, the tag is bad: it was never read; "
              "pump=1, the tag is bad: it was never read",
              m_check->openText().toStdString());
}

TEST_F(HealthCheckTest, WrittenValueCountsFromTheFirstReadBehindTheWrite)
{
    start({"level=17"});
    read(LEVEL, 16, 100);
    m_check->writeStarted(LEVEL);
    read(LEVEL, 17, 200);
    m_check->writeEnded(LEVEL, 300);
    judge(300);
    EXPECT_FALSE(m_check->isMet());
    read(LEVEL, 17, 301);
    EXPECT_TRUE(m_check->isMet());
}

TEST_F(HealthCheckTest, SecondWriteOfATagHoldsItsValueBackToo)
{
    start({"level=17"});
    m_check->writeStarted(LEVEL);
    m_check->writeStarted(LEVEL);
    m_check->writeEnded(LEVEL, 100);
    read(LEVEL, 17, 200);
    EXPECT_FALSE(m_check->isMet());
    m_check->writeEnded(LEVEL, 300);
    read(LEVEL, 17, 400);
    EXPECT_TRUE(m_check->isMet());
}

TEST_F(HealthCheckTest, TagThatIsBadForTooLongIsNamedWithItsReason)
{
    start({}, 2 * SECOND);
    readAll(SECOND);
    turnBad(PUMP, "station 1 does not answer", 2 * SECOND);
    judge(4 * SECOND - 1);
    EXPECT_EQ("", failure());
    judge(4 * SECOND);
    EXPECT_EQ("pump (QX0.5) has been bad for 2.0 s: station 1 does not answer", failure());
    EXPECT_TRUE(m_check->isDecided());
}

TEST_F(HealthCheckTest, GoodTimeBetweenEndsTheBadTime)
{
    start({}, 2 * SECOND);
    readAll(SECOND);
    turnBad(PUMP, "no", 2 * SECOND);
    readAll(3 * SECOND);
    turnBad(PUMP, "no", 4 * SECOND);
    judge(5 * SECOND);
    EXPECT_EQ("", failure());
    const TagState bad = m_states[PUMP];
    judge(7 * SECOND, {{PUMP, 55 * SECOND / 10, stateOf(QByteArray(1, '\0'), 0)},
                       {PUMP, 56 * SECOND / 10, bad}});
    EXPECT_EQ("", failure());
}

TEST_F(HealthCheckTest, TagWithoutAValueIsBadFromTheStart)
{
    start({}, 2 * SECOND);
    judge(2 * SECOND - 1);
    EXPECT_EQ("", failure());
    judge(2 * SECOND);
    EXPECT_EQ("level (MW100) has been bad for 2.0 s: it was never read", failure());
}

TEST_F(HealthCheckTest, WithoutALimitATagMayBeBadForever)
{
    start({"level=1"});
    judge(qint64(1000000) * SECOND);
    EXPECT_FALSE(m_check->isDecided());
}
