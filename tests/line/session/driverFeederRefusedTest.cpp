#include "modbusFrames.h"
#include "sessionBench.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

// Blocks that the PLC refuses: only the tags of its illegal registers are bad.

namespace {

enum {
    JOB = 1,
    MS = SessionBench::MS,
    SECOND = SessionBench::SECOND,
    READ_HOLDING = 3,
    READ_INPUT = 4
};

const char* const ILLEGAL = "refused by the PLC: illegal address (exception 2)";

std::vector<Tag> eightWords()
{
    std::vector<Tag> tags;
    for (int i = 0; i < 8; ++i)
        tags.push_back(tagOf("MW", 3100 + i));
    return tags;
}

} // namespace

class DriverFeederRefusedTest : public testing::Test
{
protected:
    DriverFeederRefusedTest()
    {
        bench.line.disturb = [this](const QByteArray& request, ModelLine::Coming& coming) {
            if (isRefused(request)) coming.bytes = refusalOf(request, code);
        };
    }

    bool isRefused(const QByteArray& request) const
    {
        const int function = byteOf(request, 1);
        if (function != READ_HOLDING && function != READ_INPUT) return false;
        const int first = wordOf(request, 2);
        const int count = wordOf(request, 4);
        const std::set<int>& illegal = function == READ_HOLDING ? holding : inputs;
        const auto found = illegal.lower_bound(first);
        return count > mostWords || (found != illegal.end() && *found < first + count);
    }

    std::vector<int> badTags()
    {
        std::vector<int> bad;
        for (const auto& [tag, note] : bench.sink.tags) {
            if (!note.good) bad.push_back(tag);
        }
        return bad;
    }

    SessionBench bench;
    std::set<int> holding; ///< registers whose reads are refused
    std::set<int> inputs;
    int mostWords = 125; ///< longer reads are refused
    int code = 2;
};

using Indices = std::vector<int>;

TEST_F(DriverFeederRefusedTest, OnlyTheTagOfAnIllegalRegisterIsBad)
{
    for (int i = 0; i < 8; ++i)
        bench.plc.station(1).holding[3100 + i] = 50 + i;
    holding = {3105};
    bench.poll(eightWords());
    ASSERT_EQ(1u, bench.blocks.size());
    bench.run(SECOND);
    EXPECT_EQ(Indices{5}, badTags());
    EXPECT_EQ(QLatin1String(ILLEGAL), bench.sink.tags[5].trouble);
    for (const int tag : {0, 1, 2, 3, 4, 6, 7})
        EXPECT_EQ(50 + tag, bench.shown(tag));
}

TEST_F(DriverFeederRefusedTest, TagsThatThePlcGivesAreNeverShownAsBad)
{
    holding = {3105};
    bench.poll(eightWords());
    bench.run(10 * SECOND);
    EXPECT_EQ(1u, bench.sink.badCounts.size());
    EXPECT_EQ(1, bench.sink.badCounts[5]);
}

TEST_F(DriverFeederRefusedTest, BlockStaysSplit)
{
    holding = {3105};
    bench.poll(eightWords(), 100 * MS);
    bench.run(SECOND);
    bench.sent.clear();
    bench.run(10 * SECOND);
    // The parts: words 0 to 3, word 4, word 5 and words 6 to 7.
    EXPECT_EQ(size_t(100 * 4), bench.sent.size());
}

TEST_F(DriverFeederRefusedTest, RefusedTagBecomesGoodWhenThePlcGivesIt)
{
    holding = {3105};
    bench.poll(eightWords());
    bench.run(SECOND);
    holding.clear();
    bench.plc.station(1).holding[3105] = 9;
    bench.run(SECOND);
    EXPECT_TRUE(badTags().empty());
    EXPECT_EQ(9, bench.shown(5));
}

TEST_F(DriverFeederRefusedTest, BlockThatIsRefusedLaterIsSplitThen)
{
    bench.poll(eightWords());
    bench.run(SECOND);
    EXPECT_TRUE(badTags().empty());
    holding = {3102};
    bench.run(SECOND);
    EXPECT_EQ(Indices{2}, badTags());
}

TEST_F(DriverFeederRefusedTest, IllegalRegisterInAGapMakesNoTagBad)
{
    holding = {3103};
    bench.poll({tagOf("MW", 3100), tagOf("MW", 3101), tagOf("MW", 3105), tagOf("MW", 3106)});
    ASSERT_EQ(1u, bench.blocks.size());
    bench.run(SECOND);
    EXPECT_EQ(4u, bench.sink.tags.size());
    EXPECT_TRUE(badTags().empty());
}

TEST_F(DriverFeederRefusedTest, PlcThatGivesFewWordsAtOnceIsReadInParts)
{
    code = 3;
    mostWords = 20;
    std::vector<Tag> tags;
    for (int i = 0; i < 100; ++i)
        tags.push_back(tagOf("MW", 3100 + i));
    bench.poll(tags);
    bench.run(2 * SECOND);
    EXPECT_EQ(100u, bench.sink.tags.size());
    EXPECT_TRUE(badTags().empty());
}

TEST_F(DriverFeederRefusedTest, OtherRefusalsDoNotSplit)
{
    for (const int other : {1, 4, 8, 10, 11}) {
        SCOPED_TRACE(other);
        SessionBench own;
        own.line.disturb = [&](const QByteArray& request, ModelLine::Coming& coming) {
            if (wordOf(request, 2) == 3100) coming.bytes = refusalOf(request, other);
        };
        own.poll(eightWords(), SECOND);
        own.run(10 * SECOND);
        EXPECT_EQ(10u, own.sent.size());
        for (int tag = 0; tag < 8; ++tag)
            EXPECT_FALSE(own.sink.tags[tag].good);
    }
}

TEST_F(DriverFeederRefusedTest, PartsKeepTheRateOfTheirBlock)
{
    holding = {3105};
    std::vector<Tag> tags = eightWords();
    for (Tag& tag : tags)
        ASSERT_TRUE(takeRate(QLatin1String("10s"), tag.rate));
    bench.poll(tags);
    bench.run(SECOND);
    EXPECT_EQ(Indices{5}, badTags());
    EXPECT_EQ(1, bench.sink.tags[0].reads);
    bench.run(60 * SECOND);
    EXPECT_EQ(7, bench.sink.tags[0].reads);
    EXPECT_EQ(7, bench.sink.tags[7].reads);
}

TEST_F(DriverFeederRefusedTest, OnceIsReadInPartsAndThenNoMore)
{
    holding = {3105};
    std::vector<Tag> tags = eightWords();
    for (Tag& tag : tags)
        ASSERT_TRUE(takeRate(QLatin1String("once"), tag.rate));
    bench.poll(tags);
    bench.run(SECOND);
    EXPECT_EQ(Indices{5}, badTags());
    const size_t sent = bench.sent.size();
    bench.run(60 * SECOND);
    EXPECT_EQ(sent, bench.sent.size());
}

TEST_F(DriverFeederRefusedTest, ReadJobShowsWhatThePlcGivesAndNamesTheRest)
{
    for (int i = 0; i < 8; ++i)
        bench.plc.station(1).holding[3100 + i] = 50 + i;
    holding = {3102, 3105};
    std::vector<Tag> tags = eightWords();
    tags.push_back(tagOf("MW", 3900));
    bench.know(tags);
    bench.feeder.addRead(JOB, bench.blocks);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::REFUSED, bench.sink.outcome(JOB));
    EXPECT_EQ(QLatin1String("MW204 of station 1: refused by the PLC: illegal address (exception 2)"
                            "; MW210 of station 1: refused by the PLC: illegal address (exception "
                            "2)"),
              bench.sink.ends[JOB].trouble);
    EXPECT_EQ((Indices{2, 5}), badTags());
    EXPECT_EQ(QLatin1String(ILLEGAL), bench.sink.tags[2].trouble);
    for (const int tag : {0, 1, 3, 4, 6, 7})
        EXPECT_EQ(50 + tag, bench.shown(tag));
    EXPECT_TRUE(bench.sink.tags[8].good);
}

namespace {

// A register says in its high byte which register it is, and in its low byte its version.
enum { FIRST_MARKER_REGISTER = 3000, REGISTERS = 100, INPUT_MARK = 128, VERSIONS = 256 };

int contentOf(const QString& area, int number, int version)
{
    const int mark = area == QLatin1String("IW") ? number + INPUT_MARK : number - 3000;
    return mark * VERSIONS + version;
}

/// Whether each word of the value is of the tag's register.
bool isOfTag(const Tag& tag, const QByteArray& bytes)
{
    if (tag.isBit()) return bytes.size() == 1;
    for (int word = 0; word < tag.units(); ++word) {
        const int mark = byteOf(bytes, 2 * word + 1);
        if (mark != contentOf(tag.area, tag.number + word, 0) / VERSIONS) return false;
    }
    return true;
}

/// The registers of a tag, of words or of a bit's group.
std::pair<int, int> registersOf(const Tag& tag)
{
    if (!tag.isBit()) return {tag.number, tag.number + tag.units()};
    const int base = tag.area == QLatin1String("MX") ? int(FIRST_MARKER_REGISTER) : 0;
    const int word = base + (tag.number - base) / 16;
    return {word, word + 1};
}

std::vector<Tag> randomTags(std::mt19937& random)
{
    static const char* const RATES[] = {"fast", "fast", "fast", "300ms", "2s", "once"};
    std::vector<Tag> tags;
    for (unsigned left = 1 + unsigned(random() % 60); left > 0; --left) {
        const int at = int(random() % (REGISTERS - 1));
        switch (random() % 5) {
        case 0:
            tags.push_back(tagOf("IW", at));
            break;
        case 1:
            tags.push_back(tagOf("MX", 3000 + 16 * at + int(random() % 16), Tag::BOOL));
            break;
        case 2:
            tags.push_back(tagOf("MW", 3000 + at, Tag::FLOAT32));
            break;
        default:
            tags.push_back(tagOf("MW", 3000 + at));
        }
        EXPECT_TRUE(takeRate(QLatin1String(RATES[random() % 6]), tags.back().rate));
    }
    return tags;
}

} // namespace

/// A PLC with random illegal registers, and random tags.
class DriverFeederRandomRefusals : public DriverFeederRefusedTest,
                                   public testing::WithParamInterface<unsigned>
{
protected:
    DriverFeederRandomRefusals() : random(GetParam()), tags(randomTags(random))
    {
        for (unsigned left = unsigned(random() % 12); left > 0; --left)
            (random() % 4 == 0 ? inputs : holding).insert(illegalPlace());
        if (random() % 4 == 0) mostWords = 5 + int(random() % 20);
        for (int i = 0; i < REGISTERS; ++i)
            change(i);
        bench.sink.onValue = [this](int tag, const QByteArray& bytes) {
            if (!isOfTag(tags[size_t(tag)], bytes)) ++wrongValues;
        };
    }

    int illegalPlace()
    {
        const int place = int(random() % REGISTERS);
        return random() % 4 == 0 ? place : FIRST_MARKER_REGISTER + place;
    }

    /// Gives register `at` of both memories another version.
    void change(int at)
    {
        const int version = int(random() % VERSIONS);
        PlcModel::Station& station = bench.plc.station(1);
        station.holding[FIRST_MARKER_REGISTER + at] =
            contentOf(QLatin1String("MW"), FIRST_MARKER_REGISTER + at, version);
        station.inputs[at] = contentOf(QLatin1String("IW"), at, version);
    }

    bool isIllegal(const Tag& tag) const
    {
        const auto [first, end] = registersOf(tag);
        const std::set<int>& illegal = tag.area.startsWith(QLatin1Char('I')) ? inputs : holding;
        const auto found = illegal.lower_bound(first);
        return found != illegal.end() && *found < end;
    }

    /// @param isOnceCurrent  whether the tags of the rate once show the present value
    void expectOnlyIllegalTagsBad(bool isOnceCurrent)
    {
        for (size_t i = 0; i < tags.size(); ++i) {
            const Tag& tag = tags[i];
            const RecordingSink::TagNote& note = bench.sink.tags[int(i)];
            ASSERT_EQ(!isIllegal(tag), note.good) << i << ": " << note.trouble.toStdString();
            if (isIllegal(tag)) {
                ASSERT_TRUE(note.trouble.startsWith(QLatin1String("refused by the PLC")));
                continue;
            }
            if (!isOnceCurrent && tag.rate.kind == ReadRate::ONCE) continue;
            for (int unit = 0; unit < tag.units(); ++unit)
                ASSERT_EQ(bench.plc.element(1, tag.area.toStdString(), tag.number + unit),
                          tag.isBit() ? byteOf(note.bytes, 0)
                                      : byteOf(note.bytes, 2 * unit + 1) * 256 +
                                            byteOf(note.bytes, 2 * unit))
                    << i;
        }
        ASSERT_EQ(0, wrongValues);
    }

    std::mt19937 random;
    const std::vector<Tag> tags;
    int wrongValues = 0;
};

INSTANTIATE_TEST_SUITE_P(, DriverFeederRandomRefusals, testing::Range(1u, 61u));

TEST_P(DriverFeederRandomRefusals, PollingShowsAllTagsButTheIllegal)
{
    bench.poll(tags, random() % 2 == 0 ? 0 : 100 * MS);
    for (int i = 0; i < 20; ++i) {
        bench.run(100 * MS);
        change(int(random() % REGISTERS));
    }
    bench.run(10 * SECOND);
    expectOnlyIllegalTagsBad(false);
    bench.loseLink(QLatin1String("gone"));
    bench.bringLinkBack();
    bench.run(10 * SECOND);
    expectOnlyIllegalTagsBad(true);
}

TEST_P(DriverFeederRandomRefusals, ReadJobShowsAllTagsButTheIllegal)
{
    bench.know(tags);
    bench.feeder.addRead(JOB, bench.blocks);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    expectOnlyIllegalTagsBad(true);
    const bool isAnyIllegal =
        std::any_of(tags.begin(), tags.end(), [this](const Tag& tag) { return isIllegal(tag); });
    EXPECT_EQ(isAnyIllegal ? JobEnd::REFUSED : JobEnd::DONE, bench.sink.outcome(JOB));
}
