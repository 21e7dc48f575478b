#ifndef RANDOM_WORLD_H
#define RANDOM_WORLD_H

#include "modelTypes.h"
#include "randomSource.h"

namespace model {

/// What the calls of one sequence are about: few stations and narrow windows of addresses, so that
/// calls meet each other, with a stranger now and then.
class RandomWorld
{
public:
    explicit RandomWorld(RandomSource& random);

    int station();
    std::string area();
    /// Of this driver, or a name that no area has.
    std::string areaOrStranger();
    int addr(const std::string& area);

    /// Units of a polled key, of a one-shot read, of a recipe record.
    int count(const std::string& area);
    Key key();

    /// Two bytes a word, one a bit.
    Bytes values(const std::string& area, int count);

    static bool isWords(const std::string& area);

private:
    RandomSource& m_random;
    std::vector<int> m_stations;
    std::vector<std::string> m_areas;
    int m_windowStart;
    int m_windowWidth;
};

} // namespace model

#endif
