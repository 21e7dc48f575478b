#include "recipeCalls.h"

namespace model {

namespace {

enum { LARGE_SET = 6, MOST_OFFSET = 2000, RAISED = 1, OTHER_LINK = 333, STRANGER_ADDRESSES = 200 };

} // namespace

RecipeRecord RecipeCalls::record(int linkNo)
{
    RecipeRecord record;
    record.linkNo = m_random.oneIn(12) ? OTHER_LINK : linkNo;
    record.station = m_world.station();
    record.area = m_random.oneIn(4) ? m_world.areaOrStranger() : m_world.area();
    const bool words = RandomWorld::isWords(record.area);
    record.addr = m_world.addr(record.area);
    // Unsorted, a record before its block's first one would be found outside of the reply.
    if (!words && (record.addr < 0 || record.addr > 65000))
        record.addr = m_random.below(STRANGER_ADDRESSES);
    record.count = m_random.oneIn(3) ? m_world.count(record.area) : m_random.between(1, 3);
    if (m_random.oneIn(words ? 12 : 6))
        record.count = words ? m_random.between(505, 516) : m_random.between(1015, 1035);
    record.offset = m_random.oneIn(10) ? 0 : m_random.below(MOST_OFFSET);
    if (m_random.oneIn(12)) record.count = m_random.between(-1, 0);
    if (record.count <= 0 && m_random.oneIn(2)) record.offset = m_random.between(-9, -1);
    return record;
}

RecipeCall RecipeCalls::set(int linkNo)
{
    RecipeCall call;
    const int most = m_random.pick(std::vector<int>{2, 6, 6, 20});
    const int count = m_random.between(0, most);
    for (int i = 0; i < count; ++i)
        call.records.push_back(record(linkNo));
    return call;
}

RecipeCall RecipeCalls::largeSet(int linkNo)
{
    RecipeCall call;
    for (int i = 0; i < LARGE_SET; ++i)
        call.records.push_back(record(linkNo));
    return call;
}

RecipeCall RecipeCalls::smallSet(int linkNo)
{
    RecipeCall call;
    call.records.push_back(record(linkNo));
    return call;
}

FlagCall RecipeCalls::flag()
{
    static const std::vector<unsigned char> VALUES = {0, 0, 1, 1, 2, 255};
    return {m_random.oneIn(2), m_random.pick(VALUES)};
}

FlagCall RecipeCalls::raisedFlag()
{
    return {m_random.oneIn(2), RAISED};
}

} // namespace model
