#include "editorCalls.h"

namespace model {

namespace {

const std::vector<std::string> AREAS = {"MW", "IW", "QW", "MX", "IX", "QX"};

const std::vector<std::string> EDGE_TEXTS = {
    "0",    "510",   "511",   "512",    "8190",   "8191",   "8192",  "-1",          "-2",
    "-3",   "0.0",   "511.7", "512.0",  "7816.7", "7817.0", "5.9",   "-1.7",        "0.-1",
    "-1.7", "-1.0",  "12.3",  "12",     "12.",    ".3",     "1.2.3", "a.b",         "abc",
    "",     ".",     " 8 ",   "+4",     "4+",     "0x10",   "1e3",   "99999999999", "7.8",
    "1.",   "510.7", "--2",   "-376.7", "-376.7", "0.-1",   "-2.15"};

std::string someArea(RandomSource& random, RandomWorld& world)
{
    return random.oneIn(3) ? world.areaOrStranger() : random.pick(AREAS);
}

std::string someText(RandomSource& random, const std::string& area)
{
    if (random.oneIn(25)) return area == "MX" ? "-376.7" : "0.-1"; // both are number -1
    if (random.oneIn(2)) return random.pick(EDGE_TEXTS);
    if (RandomWorld::isWords(area)) return std::to_string(random.between(-5, 8200));
    return std::to_string(random.between(-5, 7900)) + "." + std::to_string(random.between(-1, 9));
}

int someCount(RandomSource& random)
{
    return random.oneIn(3) ? random.between(-2, 300) : 1;
}

/// With an address just inside or outside of what an unknown area is tested against.
template <typename Checked> void askAboutStranger(RandomSource& random, Checked& call)
{
    if (!random.oneIn(8)) return;
    call.area = "ZZ";
    call.addr = random.between(-1, 1);
    call.count = random.between(0, 2);
}

Call check(RandomSource& random, RandomWorld& world)
{
    CheckCall call;
    call.area = someArea(random, world);
    call.text = someText(random, call.area);
    call.addr = random.oneIn(2) ? 0 : random.between(-2, 2);
    call.dataType = RandomWorld::isWords(call.area) ? random.between(0, 9) : -1;
    if (random.oneIn(8)) call.dataType = random.between(-2, 1);
    call.count = someCount(random);
    call.accessMode = random.between(-1, 3);
    askAboutStranger(random, call);
    return call;
}

Call validity(RandomSource& random, RandomWorld& world)
{
    ValidityCall call;
    call.area = someArea(random, world);
    call.text = someText(random, call.area);
    call.addr = random.oneIn(2) ? 0 : random.between(-2, 2);
    call.count = someCount(random);
    call.isWord = RandomWorld::isWords(call.area) ? random.between(1, 2) : 0;
    if (random.oneIn(8)) call.isWord = random.between(-1, 1);
    askAboutStranger(random, call);
    return call;
}

Call series(RandomSource& random, RandomWorld& world)
{
    static const std::vector<int> STARTS = {0, 2990, 3000, 7090, 250, 4090, 65530, -9, 1234};
    static const std::vector<int> HIGHEST = {7095, 255, 65535, 4095};
    SeriesCall call;
    call.area = someArea(random, world);
    call.start =
        random.oneIn(3) ? random.pick(HIGHEST) : random.pick(STARTS) + random.between(-5, 5);
    call.count = random.between(-1, 12);
    call.interval = random.between(-3, 20);
    return call;
}

Call identity(RandomSource& random)
{
    if (random.oneIn(5))
        return SetPageCall{"page " + std::to_string(random.below(9)), random.oneIn(4)};
    return IdentityCall{static_cast<Identity>(random.below(4)), random.oneIn(6)};
}

} // namespace

Call editorCall(RandomSource& random, RandomWorld& world)
{
    enum { CHECK, VALIDITY, SERIES, DESCRIBE, LIST, IDENTITY };
    static const std::vector<int> WEIGHTS = {6, 4, 4, 2, 1, 2};
    switch (random.weighted(WEIGHTS)) {
    case CHECK:
        return check(random, world);
    case VALIDITY:
        return validity(random, world);
    case SERIES:
        return series(random, world);
    case DESCRIBE:
        return DescribeCall{someArea(random, world)};
    case LIST:
        return AreaListCall{random.between(-1, 3)};
    default:
        return identity(random);
    }
}

} // namespace model
