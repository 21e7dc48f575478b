// How long planning takes, for tags that lie densely, sparsely and on many stations.
//
// usage: planSpeed
// Prints the median of 21 runs for 1,000 and 10,000 tags of each kind.
// Exit status: 0 under 5 and 50 ms, 1 over.

#include "plan/readPlan.h"
#include "wire/lineTiming.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <random>

namespace {

enum { RUNS = 21, FIRST_WORD = 3000, WORDS = 4096, STATIONS = 247 };

struct Kind
{
    const char* name;
    int stations;
    int wordsApart; ///< the mean distance of two tags
};

std::vector<Tag> randomTags(const Kind& kind, int count)
{
    std::mt19937 random(1);
    std::vector<Tag> tags;
    for (int i = 0; i < count; ++i) {
        Tag tag;
        tag.station = 1 + int(random() % unsigned(kind.stations));
        tag.area = QLatin1String("MW");
        tag.type = random() % 4 == 0 ? Tag::FLOAT32 : Tag::UINT16;
        const int span = std::min(int(WORDS), kind.wordsApart * count / kind.stations);
        tag.number = FIRST_WORD + int(random() % unsigned(std::max(span, 1)));
        tags.push_back(tag);
    }
    return tags;
}

double medianMilliseconds(const std::vector<Tag>& tags)
{
    const WireCost cost = wireCost(LineTiming(LineSettings()), 2000);
    std::vector<double> times;
    for (int run = 0; run < RUNS; ++run) {
        const auto start = std::chrono::steady_clock::now();
        const std::vector<ReadBlock> blocks = planReads(tags, cost, 125);
        const std::chrono::duration<double, std::milli> taken =
            std::chrono::steady_clock::now() - start;
        if (blocks.empty()) return 1e9;
        times.push_back(taken.count());
    }
    std::sort(times.begin(), times.end());
    return times[RUNS / 2];
}

} // namespace

int main()
{
    const Kind kinds[] = {{"dense, one station", 1, 1},
                          {"sparse, one station", 1, 20},
                          {"sparse, 247 stations", STATIONS, 20}};
    bool fast = true;
    for (const Kind& kind : kinds) {
        const double thousand = medianMilliseconds(randomTags(kind, 1000));
        const double tenThousand = medianMilliseconds(randomTags(kind, 10000));
        std::printf("plan, %-22s 1000 tags %6.2f ms   10000 tags %6.2f ms\n", kind.name, thousand,
                    tenThousand);
        fast = fast && thousand < 5 && tenThousand < 50;
    }
    return fast ? 0 : 1;
}
