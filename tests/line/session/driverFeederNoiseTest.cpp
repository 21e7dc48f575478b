#include "sessionBench.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <tuple>

// Ten thousand exchanges over a line that loses, damages, delays, doubles and adds bytes at random,
// with a fixed seed. The PLC's actions are recorded at its end of the line and compared with the
// host's reports.

namespace {

enum {
    STATIONS = 3,
    WORDS = 12,
    FIRST_WORD = 3100,
    WORD_STEP = 40, ///< too large a distance for a common block, so that all blocks are alike
    BITS = 8,
    FIRST_BIT = 3000, ///< first bit of MX; no tag uses its word, 3000
    CLASSES = 64,     ///< a value modulo CLASSES identifies its word
    REFUSED_WORD = FIRST_WORD + 3 * WORD_STEP,
    EXCHANGES = 10000,
    MOST_WAITING = 30,
    SECOND = SessionBench::SECOND
};

using Element = std::tuple<int, int, bool>; ///< station, number, is a bit

struct WriteJob
{
    Element element;
    int value;
    size_t since; ///< number of requests sent before it was handed in
};

/// The PLC's action on a write request.
struct Deed
{
    Element element;
    int value;
    bool refused;
};

int classOf(int station, int number)
{
    return (number / WORD_STEP * STATIONS + station) % CLASSES;
}

/// A random 16-bit value that belongs to the word.
int valueFor(int station, int number, unsigned random)
{
    return int(random % 1000u) * CLASSES + classOf(station, number);
}

} // namespace

class DriverFeederNoiseTest : public testing::Test
{
protected:
    DriverFeederNoiseTest()
    {
        for (int station = 1; station <= STATIONS; ++station)
            addTags(station);
        bench.line.disturb = [this](const QByteArray& request, ModelLine::Coming& coming) {
            noteDeed(request, coming.bytes);
            if (noisy) disturb(coming);
        };
        bench.line.losesRequest = [this] { return noisy && happens(4); };
        bench.line.comesAgain = [this] {
            return noisy && happens(4) ? qint64(random() % 30000u) : qint64(ModelLine::ONCE);
        };
        bench.sink.onValue = [this](int tag, const QByteArray& bytes) {
            if (isForeign(tags[size_t(tag)], bytes)) ++foreignValues;
        };
    }

    void addTags(int station)
    {
        PlcModel::Station& memory = bench.plc.station(station);
        for (int i = 0; i < WORDS; ++i) {
            const int number = FIRST_WORD + i * WORD_STEP;
            memory.holding[number] = classOf(station, number);
            tags.push_back(tagOf("MW", number, Tag::UINT16, station));
        }
        for (int i = 0; i < BITS; ++i)
            tags.push_back(tagOf("MX", FIRST_BIT + i, Tag::BOOL, station));
        memory.refusals[REFUSED_WORD] = 2;
    }

    /// Whether a word shows a value that belongs to another word.
    static bool isForeign(const Tag& tag, const QByteArray& bytes)
    {
        if (tag.isBit() || tag.number == REFUSED_WORD) return false;
        const int value =
            static_cast<unsigned char>(bytes.at(0)) + 256 * static_cast<unsigned char>(bytes.at(1));
        return value % CLASSES != classOf(tag.station, tag.number);
    }

    void noteDeed(const QByteArray& request, const QByteArray& reply)
    {
        const int function = request.at(1);
        deeds.resize(bench.sent.size(), Deed{Element(0, 0, false), 0, false});
        if ((function != 5 && function != 6) || reply.isEmpty()) return;
        const auto word = [&request](int at) {
            return static_cast<unsigned char>(request.at(at)) * 256 +
                   static_cast<unsigned char>(request.at(at + 1));
        };
        const int value = function == 6 ? word(4) : word(4) != 0 ? 1 : 0;
        deeds.back() = {Element(request.at(0), word(2), function == 5), value, reply.size() == 5};
    }

    bool happens(int percent)
    {
        return int(random() % 100u) < percent;
    }

    QByteArray strayBytes()
    {
        QByteArray bytes(int(random() % 4u), '\0');
        for (int i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<char>(random() & 255u);
        return bytes;
    }

    void disturb(ModelLine::Coming& coming)
    {
        if (coming.bytes.isEmpty()) return;
        if (happens(3)) {
            const int at = int(random() % unsigned(coming.bytes.size()));
            coming.bytes[at] = static_cast<char>(coming.bytes.at(at) ^ 16);
        }
        if (happens(10)) coming.bytes = strayBytes() + coming.bytes + strayBytes();
        if (happens(4)) coming.delay = SessionBench::ANSWER * qint64(100 + random() % 80u) / 100;
        if (happens(4)) coming.bytes.clear();
    }

    /// Hands in a write of a random tag unless too many writes wait.
    void writeSomething()
    {
        if (int(jobs.size()) - int(bench.sink.ends.size()) >= MOST_WAITING) return;
        const Tag& tag = tags[random() % tags.size()];
        const int job = int(jobs.size());
        const int value = tag.isBit() ? int(random() & 1u)
                                      : valueFor(tag.station, tag.number, unsigned(random()));
        jobs.push_back({Element(tag.station, tag.number, tag.isBit()), value, bench.sent.size()});
        bench.feeder.addWrite(job,
                              {tag.isBit() ? bitWriteOf("MX", tag.number, value != 0, tag.station)
                                           : wordWriteOf(tag.number, value, tag.station)});
    }

    /// Whether the PLC has done or refused the write since it was handed in.
    bool hasDeed(const WriteJob& job, bool refused) const
    {
        for (size_t i = job.since; i < deeds.size(); ++i) {
            const Deed& deed = deeds[i];
            if (deed.element == job.element && deed.value == job.value && deed.refused == refused)
                return true;
        }
        return false;
    }

    int plcValue(const Element& element)
    {
        const auto& [station, number, isBit] = element;
        return isBit ? int(bench.plc.coil(station, number)) : bench.plc.word(station, number);
    }

    void makeNoise()
    {
        bench.poll(tags);
        // Reads all words once: a failed write to a word that was never read reverts to 0.
        bench.run(2 * SECOND);
        noisy = true;
        while (bench.sink.exchanges.size() < EXCHANGES && !HasFailure()) {
            writeSomething();
            bench.run(qint64(random() % 40000u));
        }
        noisy = false;
        // The longest pause of a silent station is 12 s.
        bench.run(30 * SECOND);
    }

    SessionBench bench;
    std::mt19937 random{7};
    bool noisy = false;
    std::vector<Tag> tags;
    std::vector<WriteJob> jobs;
    std::vector<Deed> deeds; ///< by request
    int foreignValues = 0;
};

TEST_F(DriverFeederNoiseTest, WriteResultsAndShownValuesMatchThePlc)
{
    makeNoise();
    ASSERT_EQ(jobs.size(), bench.sink.ends.size());
    EXPECT_EQ(0, bench.sink.endedTwice);
    std::map<JobEnd::Outcome, int> outcomes;
    std::map<Element, int> newest;
    for (size_t job = 0; job < jobs.size(); ++job) {
        const JobEnd::Outcome outcome = bench.sink.outcome(int(job));
        ++outcomes[outcome];
        newest[jobs[job].element] = int(job);
        if (outcome == JobEnd::DONE) {
            EXPECT_TRUE(hasDeed(jobs[job], false)) << "job " << job << " was not done";
        } else if (outcome == JobEnd::REFUSED) {
            EXPECT_TRUE(hasDeed(jobs[job], true)) << "job " << job << " was not refused";
        }
    }
    for (const auto& [element, job] : newest) {
        if (bench.sink.outcome(job) == JobEnd::DONE) {
            EXPECT_EQ(jobs[size_t(job)].value, plcValue(element)) << "job " << job;
        }
    }
    for (size_t tag = 0; tag < tags.size(); ++tag) {
        const Tag& shown = tags[tag];
        if (shown.number == REFUSED_WORD) continue;
        EXPECT_TRUE(bench.sink.tags[int(tag)].good) << tag;
        EXPECT_EQ(plcValue(Element(shown.station, shown.number, shown.isBit())),
                  bench.shown(int(tag)))
            << tag;
    }
    EXPECT_EQ(0, foreignValues);
    std::printf("noisy line: %zu exchanges, %zu writes: %d done, %d refused, %d timed out, "
                "%d replaced\n",
                bench.sink.exchanges.size(), jobs.size(), outcomes[JobEnd::DONE],
                outcomes[JobEnd::REFUSED], outcomes[JobEnd::TIMED_OUT], outcomes[JobEnd::LOST]);
    EXPECT_GT(outcomes[JobEnd::DONE], 1000);
    EXPECT_GT(outcomes[JobEnd::REFUSED], 10);
}
