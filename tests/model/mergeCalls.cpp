#include "mergeCalls.h"

namespace model {

namespace {

/// The sort key of a marker past 65534 reaches that of the first input bits.
void mixAtTheSeam(MergeCall& call, RandomSource& random, int station)
{
    enum { SEAM = 65535 };
    for (int i = 0; i < 3; ++i) {
        call.keys.push_back({station, "MX", SEAM + random.between(-1, 6), 0, 1, 0});
        call.keys.push_back({station, "IX", random.between(0, 6), 0, 1, 0});
    }
}

} // namespace

MergeCall mergeOfAnyKeys(RandomSource& random, RandomWorld& world)
{
    MergeCall call;
    const int most = random.pick(std::vector<int>{1, 3, 8, 20});
    const int count = random.oneIn(15) ? 0 : random.between(1, most);
    for (int i = 0; i < count; ++i)
        call.keys.push_back(world.key());
    if (random.oneIn(50)) call.keys.assign(2, {1, "nowhere", 1, 0, 1, 0});
    return call;
}

MergeCall mergeOfNeighbours(RandomSource& random, RandomWorld& world)
{
    MergeCall call;
    Key key = world.key();
    const int count = random.between(2, 12);
    for (int i = 0; i < count; ++i) {
        key.count = random.oneIn(10) ? random.between(-5, 0) : random.between(1, 4);
        call.keys.push_back(key);
        key.addr += random.pick(std::vector<int>{0, 0, 1, 1, 2, key.count, key.count + 1});
    }
    if (random.oneIn(4)) mixAtTheSeam(call, random, world.station());
    return call;
}

} // namespace model
