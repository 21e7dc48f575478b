#include "randomSource.h"
#include "valuesFixture.h"

#include <deque>

// Reads, writes, failures, losses and stopped processes in random order, against a model of one
// word of the PLC: at no time is a value shown as good that the PLC did not hold within the limit,
// and no time of an answer is later than its bytes came.

namespace {

class ModelOfAWord : public LinkValuesTest, public testing::WithParamInterface<int>
{
protected:
    enum { LIMIT = 2000 * MS };

    ModelOfAWord() : random(std::uint64_t(GetParam()))
    {
        held.push_back({0, 0});
        looked = linkNow();
    }

    struct Held
    {
        qint64 until; ///< of the link's clock; of the last one: no end
        int value;
    };

    void plcTakes(int value)
    {
        if (value == held.back().value) return;
        held.back().until = linkNow();
        held.push_back({0, value});
    }

    bool wasHeldWithin(const QByteArray& bytes, qint64 age)
    {
        for (size_t i = 0; i < held.size(); ++i) {
            const bool isRecent = i + 1 == held.size() || held[i].until >= linkNow() - age;
            if (isRecent && bytesOf(held[i].value) == bytes) return true;
        }
        return false;
    }

    void check()
    {
        const TagReading shown = values.reading(FAST);
        ASSERT_EQ(shown.quality == GOOD, shown.trouble.isEmpty());
        ASSERT_EQ(shown.time == 0, shown.bytes.isEmpty());
        ASSERT_TRUE(!isLost || shown.quality == BAD);
        if (shown.quality != GOOD) return;
        // The value was taken on its way to the answer, which came within the limit.
        ASSERT_TRUE(wasHeldWithin(shown.bytes, LIMIT + longestWay * MS))
            << shown.bytes.toHex().constData() << " at " << linkNow();
        ASSERT_LE(shown.time, clock.wall() - (linkNow() - cameAt) / MS);
        ASSERT_GE(shown.time, clock.wall() - LIMIT / MS);
    }

    /// Time passes, at whose steps the shown value is checked.
    void pass(int ms)
    {
        for (int left = ms; left > 0 && !HasFatalFailure(); left -= 50) {
            clock.passMs(std::min(left, 50));
            check();
        }
    }

    /// The process is stopped: nobody looks at values meanwhile.
    void stop()
    {
        clock.passMs(random.between(100, 20000));
    }

    /// looked   the PLC answers   the bytes come   the process finds them
    ///    |-----------|----------------|-------- ... -------|
    void exchange(bool isWrite)
    {
        looked = linkNow();
        pass(random.between(1, longestWay / 2));
        if (isWrite) plcTakes(random.between(1, 60000));
        const int answer = held.back().value;
        if (random.oneIn(3)) plcTakes(random.between(1, 60000)); // by its own program
        pass(random.between(1, longestWay / 2));
        if (random.oneIn(6)) return; // the answer is lost
        const qint64 came = linkNow();
        if (random.oneIn(6)) stop();
        cameAt = came;
        values.bytesCame(looked, linkNow());
        values.tagRead(FAST, bytesOf(answer), linkNow());
        check();
    }

    void lose()
    {
        values.linkChanged(false, QLatin1String("pulled"), linkNow());
        isLost = true;
        pass(random.between(1, 5000));
        isLost = false;
        values.linkChanged(true, QString(), linkNow());
    }

    const int longestWay = 80; ///< ms from a look to the answer's bytes
    RandomSource random;
    std::deque<Held> held;
    qint64 looked = 0;
    qint64 cameAt = 0; ///< when the bytes of the shown value came
    bool isLost = false;
};

} // namespace

TEST_P(ModelOfAWord, IsNeverShownGoodWithWhatItDidNotHold)
{
    for (int step = 0; step < 500 && !HasFatalFailure(); ++step) {
        switch (random.below(12)) {
        case 0:
            lose();
            break;
        case 1:
            stop();
            check();
            break;
        case 2:
            pass(random.between(1, 4000));
            break;
        case 3:
            plcTakes(random.between(1, 60000));
            break;
        case 4:
            values.tagValue(FAST, bytesOf(random.between(1, 60000)), linkNow());
            values.tagShown(FAST, bytesOf(random.between(1, 60000)), linkNow());
            break;
        case 5:
            values.tagsBad({FAST}, QLatin1String("station 1 does not answer"), linkNow());
            break;
        case 6:
            values.tagsUnanswered({FAST}, QLatin1String("noise"), linkNow());
            break;
        default:
            exchange(random.oneIn(2));
        }
        check();
    }
    if (HasFatalFailure()) ADD_FAILURE() << "seed " << GetParam();
}

INSTANTIATE_TEST_SUITE_P(, ModelOfAWord, testing::Range(1, 51));
