#include "randomWorld.h"

namespace model {

namespace {

enum { BIT_UNITS = -1, MARKER_SHIFT = 3000 };

const std::vector<std::string> AREAS = {"MW", "IW", "QW", "MX", "IX", "QX"};

const std::vector<std::string> STRANGERS = {"MW_bit", "MX_bit", "MW_BIT", "IX_B", "QW_W", "mw",
                                            "MWX",    "",       " MW",    "ZZ",   "M",    "IX_bit"};

// 0 is a broadcast; only the low byte of the others reaches the wire; 6000 overflows the sort key.
const std::vector<int> RARE_STATIONS = {0, 0, 17, 247, 255, 257, 300, -1, 6000};

} // namespace

RandomWorld::RandomWorld(RandomSource& random) : m_random(random)
{
    m_stations = {1};
    if (m_random.oneIn(2)) m_stations.push_back(2);
    if (m_random.oneIn(2)) m_stations.push_back(m_random.pick(RARE_STATIONS));
    const int areaCount = m_random.between(1, static_cast<int>(AREAS.size()));
    for (int i = 0; i < areaCount; ++i)
        m_areas.push_back(m_random.pick(AREAS));
    m_windowStart = m_random.pick(std::vector<int>{0, 0, 5, 8, 15, 16, 100, 200, 235, 1000});
    m_windowWidth = m_random.pick(std::vector<int>{3, 6, 20, 40});
}

bool RandomWorld::isWords(const std::string& area)
{
    return area == "MW" || area == "IW" || area == "QW";
}

int RandomWorld::station()
{
    return m_random.pick(m_stations);
}

std::string RandomWorld::area()
{
    return m_random.pick(m_areas);
}

std::string RandomWorld::areaOrStranger()
{
    return m_random.oneIn(12) ? m_random.pick(STRANGERS) : area();
}

int RandomWorld::addr(const std::string& area)
{
    if (m_random.oneIn(40)) return m_random.between(-40, -1);
    if (m_random.oneIn(60)) return m_random.between(65500, 65600);
    const bool marker = area == "MW" || area == "MX";
    const int start = m_windowStart + (marker ? MARKER_SHIFT : 0);
    if (marker && m_random.oneIn(30)) return m_random.between(MARKER_SHIFT - 30, MARKER_SHIFT - 1);
    return start + m_random.below(m_windowWidth);
}

int RandomWorld::count(const std::string& area)
{
    if (m_random.oneIn(20)) return m_random.between(-4, 0);
    if (m_random.oneIn(60)) return m_random.between(40, 300);
    if (m_random.oneIn(4)) return m_random.between(1, isWords(area) ? 40 : 64);
    return m_random.between(1, isWords(area) ? 6 : 18);
}

Key RandomWorld::key()
{
    Key key;
    key.station = station();
    key.area = areaOrStranger();
    key.addr = addr(key.area);
    key.count = count(key.area);
    key.unitMode = isWords(key.area) ? m_random.between(0, 2) : BIT_UNITS;
    if (m_random.oneIn(20)) key.unitMode = m_random.between(-2, 1);
    return key;
}

Bytes RandomWorld::values(const std::string& area, int count)
{
    const int size = isWords(area) ? 2 * count : count;
    const bool plain = !m_random.oneIn(6);
    Bytes values;
    for (int i = 0; i < size; ++i)
        values.push_back(static_cast<unsigned char>(m_random.below(plain ? 2 : 256)));
    return values;
}

} // namespace model
