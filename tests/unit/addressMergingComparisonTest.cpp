// Compares the merger with a slow and plain one on random keys: neighbours are sorted by swapping,
// and each pass carries the block it works on along by hand.

#include "addressMerging.h"

#include "driverFixture.h"
#include "listTexts.h"

#include <random>

namespace {

enum { ROUNDS = 400, MARKERS_FROM = 3000, FILTERED = 1, AS_GIVEN = 2 };

const Texts AREAS = {"MW", "IW", "QW", "MX", "IX", "QX"};

int positionOf(const KEY_ADDRESS& given)
{
    for (size_t i = 0; i < AREAS.size(); ++i) {
        if (given.regName.toStdString() == AREAS[i]) return int(i);
    }
    return -1;
}

int weightOf(const KEY_ADDRESS& given)
{
    return (given.station * 6 + positionOf(given)) * 65535 + given.addr;
}

bool mayJoin(const KEY_ADDRESS& a, const KEY_ADDRESS& b, bool acrossGaps)
{
    const int area = positionOf(a);
    const bool words = area >= 0 && area <= 2;
    const bool markerBits = area == 3;
    const bool otherBits = area > 3;
    if (a.station != b.station || a.regName != b.regName) return false;
    if (b.addr - a.addr - a.count > (acrossGaps ? driver.mergeLimit : 0)) return false;
    if (words) return a.addr == b.addr;
    if (otherBits || (markerBits && !acrossGaps)) {
        if (a.addr / 16 != b.addr / 16) return false;
    }
    return !markerBits || (a.addr - MARKERS_FROM) / 16 == (b.addr - MARKERS_FROM) / 16;
}

void sortBySwapping(QList<KEY_ADDRESS>& keys)
{
    const int n = int(keys.size());
    for (int pass = 0; pass <= n - 2; ++pass) {
        for (int j = 0; j <= n - 2 - pass; ++j) {
            if (weightOf(keys.at(j)) > weightOf(keys.at(j + 1))) std::swap(keys[j], keys[j + 1]);
        }
    }
}

QList<KEY_ADDRESS> plainPass(const QList<KEY_ADDRESS>& keys, bool acrossGaps,
                             std::vector<int>& starts)
{
    QList<KEY_ADDRESS> out;
    if (keys.isEmpty()) return out;
    KEY_ADDRESS cur = keys.at(0);
    const int n = int(keys.size());
    if (n == 1) out.append(cur);
    for (int i = 1; i < n; ++i) {
        const KEY_ADDRESS& next = keys.at(i);
        const int span = next.addr + next.count - cur.addr;
        if (!mayJoin(cur, next, acrossGaps) || span > driver.mergeLimit) {
            out.append(cur);
            cur = next;
            starts.push_back(i);
        } else if (span > cur.count) {
            cur.count = span;
        }
        if (i == n - 1) out.append(cur);
    }
    return out;
}

QList<KEY_ADDRESS> knownInOrder(const QList<KEY_ADDRESS>& keys)
{
    QList<KEY_ADDRESS> known;
    for (int i = 0; i < int(keys.size()); ++i) {
        if (positionOf(keys.at(i)) >= 0) known.append(keys.at(i));
    }
    sortBySwapping(known);
    return known;
}

/// Blocks with the number of the key that opened each.
Texts described(const QList<KEY_ADDRESS>& keys)
{
    Texts out = blocksOf(keys);
    for (size_t i = 0; i < out.size(); ++i)
        out[i] += " by " + std::to_string(keys.at(int(i)).param2);
    return out;
}

class KeySource
{
public:
    explicit KeySource(unsigned seed) : generator(seed) {}

    int below(int limit)
    {
        return int(generator() % unsigned(limit));
    }

    QList<KEY_ADDRESS> keys()
    {
        const char* const names[] = {"MW", "IW", "QW", "MX", "IX",
                                     "QX", "MX", "IX", "ZZ", "MW_BIT"};
        QList<KEY_ADDRESS> out;
        const int size = below(40);
        // Few names in a list, so that keys meet.
        const int first = below(8);
        for (int i = 0; i < size; ++i) {
            const char* name = names[first + below(3)];
            const int base = name[0] == 'M' ? int(MARKERS_FROM) : 0;
            const int station = 1 + below(2);
            const int addr = base + below(32);
            const int count = below(6);
            out.append(key(station, name, addr, count));
            out[i].param2 = i;
        }
        return out;
    }

    int mergeLimit()
    {
        const int limits[] = {1, 2, 4, 8, 16, 32, 125};
        return limits[below(7)];
    }

private:
    std::mt19937 generator;
};

} // namespace

class AddressMergingComparison : public DriverTest
{
};

TEST_F(AddressMergingComparison, RandomCyclesMergeAsThePlainMergerDoes)
{
    int acrossGaps = 0;
    for (unsigned seed = 1; seed <= ROUNDS; ++seed) {
        KeySource source(seed);
        driver.mergeLimit = source.mergeLimit();
        QList<KEY_ADDRESS> keys = source.keys();
        std::vector<int> unused;
        const QList<KEY_ADDRESS> adjacent = plainPass(knownInOrder(keys), false, unused);
        const QList<KEY_ADDRESS> plain = plainPass(adjacent, true, unused);
        acrossGaps += int(adjacent.size() - plain.size());
        addrMerge(keys, FILTERED);
        ASSERT_EQ(described(plain), described(keys)) << "seed " << seed;
    }
    EXPECT_GT(acrossGaps, 500) << "the keys hardly ever meet across a gap";
}

TEST_F(AddressMergingComparison, RandomRecipesMergeAsThePlainMergerDoes)
{
    int joined = 0;
    for (unsigned seed = 1; seed <= ROUNDS; ++seed) {
        KeySource source(seed);
        driver.mergeLimit = source.mergeLimit();
        QList<KEY_ADDRESS> keys = source.keys();
        sortBySwapping(keys);
        std::vector<int> starts{0};
        const QList<KEY_ADDRESS> plain = plainPass(keys, false, starts);
        joined += int(keys.size() - plain.size());
        addrMerge(keys, AS_GIVEN);
        ASSERT_EQ(described(plain), described(keys)) << "seed " << seed;
        ASSERT_EQ(starts, numbersOf(driver.blockStartIndex)) << "seed " << seed;
    }
    EXPECT_GT(joined, 500) << "the keys hardly ever meet";
}
