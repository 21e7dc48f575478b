#include "randomSource.h"
#include "recipeJobs.h"
#include "sessionBench.h"

#include <gtest/gtest.h>

#include <deque>

// Random reads, writes, recipes, lost requests and answers, noise, refusals and lost links, against
// the memory of a model PLC: every value that is told is one that the PLC held a moment ago.

namespace {

enum { MS = SessionBench::MS, SECOND = SessionBench::SECOND, WORD = 3100 };

/// The values of a tag in the PLC, and until when it held each of them.
struct Held
{
    qint64 until;
    QByteArray bytes;
};

class TruthfulTags : public testing::TestWithParam<int>
{
protected:
    // An answer that is lost is asked for again for as long as three time-outs, and the line's
    // model takes the value when the first request comes.
    enum { LONGEST_WAY = SECOND };

    TruthfulTags() : random(std::uint64_t(GetParam()))
    {
        tags = {tagOf("MW", WORD),
                tagOf("MW", WORD, Tag::UINT32),
                tagOf("MW", WORD + 1),
                tagOf("MX", 3000 + 100 * 16 + 3, Tag::BOOL),
                tagOf("MW", WORD + 300, Tag::INT32),
                tagOf("MX", 3000 + 400 * 16, Tag::BOOL)};
        tags[2].rate.kind = ReadRate::ONCE;
        tags[4].rate.kind = ReadRate::ONCE;
        history.resize(tags.size());
    }

    QByteArray truth(const Tag& tag) const
    {
        if (tag.isBit()) return QByteArray(1, char(bench.plc.element(1, "MX", tag.number)));
        QByteArray bytes;
        for (int unit = 0; unit < tag.units(); ++unit)
            bytes += wordBytes(bench.plc.word(1, tag.number + unit));
        return bytes;
    }

    /// Notes the PLC's values of this moment. Called before every answer of the PLC takes effect.
    void note()
    {
        for (size_t tag = 0; tag < tags.size(); ++tag) {
            std::deque<Held>& held = history[tag];
            const QByteArray bytes = truth(tags[tag]);
            if (held.empty() || held.back().bytes != bytes) held.push_back({bench.now, bytes});
            held.back().until = bench.now;
            while (held.size() > 1 && held.front().until < bench.now - LONGEST_WAY)
                held.pop_front();
        }
    }

    bool wasHeld(int tag, const QByteArray& bytes)
    {
        note();
        for (const Held& held : history[size_t(tag)]) {
            if (held.bytes == bytes) return true;
        }
        return false;
    }

    void disturb()
    {
        bench.line.losesRequest = [this] { return random.oneIn(15); };
        bench.line.disturb = [this](const QByteArray&, ModelLine::Coming& coming) {
            if (random.oneIn(15)) coming.bytes.clear();
            if (random.oneIn(15)) coming.bytes = QByteArray::fromHex("0103FF");
        };
    }

    void act()
    {
        const int value = 1 + random.below(60000);
        switch (random.below(9)) {
        case 0:
            return bench.writeWord(++job, WORD, value);
        case 1:
            return bench.writeWord(++job, WORD + 1, value);
        case 2:
            return bench.feeder.addWrite(++job,
                                         {bitWriteOf("MX", 3000 + 100 * 16 + 3, random.oneIn(2))});
        case 3:
            return bench.feeder.addRecipe(download(++job, {tags[1]}, {wide(value)}));
        case 4:
            return bench.feeder.addRecipe(download(++job, {tags[4]}, {wide(value)}));
        case 5:
            return bench.plc.setElement(1, "MW", WORD, value);
        case 6:
            return bench.plc.setElement(1, "MX", 3000 + 400 * 16, random.below(2));
        case 7:
            bench.plc.station(1).refusals.clear();
            if (random.oneIn(2)) bench.plc.station(1).refusals[WORD] = 4;
            return;
        default:
            if (!random.oneIn(4)) return;
            bench.loseLink(QLatin1String("pulled"));
            bench.run(100 * MS);
            return bench.bringLinkBack();
        }
    }

    QByteArray wide(int value)
    {
        return wordBytes(value) + wordBytes(value ^ 0x5555);
    }

    RandomSource random;
    SessionBench bench;
    std::vector<Tag> tags;
    std::vector<std::deque<Held>> history; ///< by tag
    int job = 0;
};

} // namespace

TEST_P(TruthfulTags, TellOnlyWhatThePlcHolds)
{
    int told = 0;
    bench.poll(tags);
    bench.sink.onRead = [&](int tag, const QByteArray& bytes) {
        ++told;
        EXPECT_TRUE(wasHeld(tag, bytes)) << "tag " << tag << ": " << bytes.toHex().constData()
                                         << " at " << bench.now << ", seed " << GetParam();
    };
    disturb();
    for (int step = 0; step < 600 && !HasFailure(); ++step) {
        note();
        act();
        const int steps = random.between(1, 40);
        for (int ms = 0; ms < steps; ++ms) {
            bench.run(MS);
            note();
        }
    }
    EXPECT_GT(told, 100);
}

// Undisturbed at last, every tag is told as the PLC has it, also a tag that is read once.
TEST_P(TruthfulTags, TellTheLastValueOfEveryWrittenTag)
{
    bench.poll(tags);
    disturb();
    for (int step = 0; step < 60; ++step) {
        const int value = 1 + random.below(60000);
        if (random.oneIn(2))
            bench.feeder.addRecipe(download(++job, {tags[4]}, {wide(value)}));
        else
            bench.writeWord(++job, WORD + 1, value);
        bench.run(random.between(1, 300) * MS);
    }
    bench.line.losesRequest = nullptr;
    bench.line.disturb = nullptr;
    bench.run(300LL * SECOND);
    for (size_t tag = 0; tag < tags.size(); ++tag)
        EXPECT_EQ(truth(tags[tag]).toHex().toStdString(),
                  bench.sink.told[int(tag)].toHex().toStdString())
            << "tag " << tag << ", seed " << GetParam();
}

INSTANTIATE_TEST_SUITE_P(, TruthfulTags, testing::Range(1, 41));
