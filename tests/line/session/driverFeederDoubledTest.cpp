#include "comparedPolling.h"
#include "recipeJobs.h"

#include <gtest/gtest.h>

#include <random>

// Answers that come twice, the second time 1 to 30 ms behind the first: of a hundred one, or ten.

namespace {

enum { MS = SessionBench::MS, SECOND = SessionBench::SECOND };

/// Doubles answers by chance under a seed, and counts those it did.
class Doubling
{
public:
    Doubling(ModelLine& line, int percent)
    {
        line.comesAgain = [this, percent] {
            if (int(m_random() % 100u) >= percent) return qint64(ModelLine::ONCE);
            ++done;
            return qint64(MS + m_random() % (29u * MS));
        };
    }

    int done = 0;

private:
    std::mt19937 m_random{5};
};

void expectNothingMixedUp(const std::vector<Tag>& tags, qint64 duration)
{
    for (const LineTiming& timing : {LineTiming(LineSettings()), LineTiming::network()}) {
        for (const int percent : {1, 10}) {
            ComparedPolling polling(tags, SessionBench::ANSWER, timing);
            const Doubling doubling(polling.bench.line, percent);
            polling.bench.run(duration);
            EXPECT_EQ(0, polling.wrong) << percent << " %";
            EXPECT_GE(doubling.done, 10);
            EXPECT_GE(polling.reads, int(tags.size()) * 50);
            for (const auto& [tag, note] : polling.bench.sink.tags)
                EXPECT_TRUE(note.good) << tag;
        }
    }
}

} // namespace

TEST(DriverFeederDoubledAnswers, MixUpNoWordsThatAreReadOneByOne)
{
    expectNothingMixedUp(wordsApart(), 100LL * SECOND);
}

TEST(DriverFeederDoubledAnswers, MixUpNoFullBlocks)
{
    expectNothingMixedUp(wordsSideBySide(2000), 120LL * SECOND);
}

TEST(DriverFeederDoubledAnswers, MixUpNothingInASingleBlock)
{
    expectNothingMixedUp(wordsSideBySide(20), 100LL * SECOND);
}

TEST(DriverFeederDoubledAnswers, MixUpNoUploads)
{
    enum { UPLOADS = 200 };
    for (const int percent : {1, 10}) {
        const std::vector<Tag> tags = wordsApart();
        ComparedPolling polling({tagOf("MW", 7000)}, SessionBench::ANSWER, LineTiming::network());
        const Doubling doubling(polling.bench.line, percent);
        const RecipePlan plan(tags, StartedDriver::LINK_NUMBER);
        for (int job = 1; job <= UPLOADS; ++job) {
            polling.bench.feeder.addRecipe(upload(job, tags));
            ASSERT_TRUE(polling.bench.runUntilEnded(job));
            ASSERT_EQ(JobEnd::DONE, polling.bench.sink.outcome(job));
            for (size_t tag = 0; tag < tags.size(); ++tag) {
                ASSERT_EQ(wordBytes(valueOfWord(tags[tag].number)),
                          plan.value(tag, polling.bench.sink.ends[job].values))
                    << tag;
            }
        }
        EXPECT_GE(doubling.done, 10);
    }
}
