#ifndef RECIPE_CALLS_H
#define RECIPE_CALLS_H

#include "calls.h"
#include "randomWorld.h"

namespace model {

/// Makes up recipe sets and the host's flags. What the driver does not define stays out: records
/// that reach out of the recipe buffer.
class RecipeCalls
{
public:
    RecipeCalls(RandomSource& random, RandomWorld& world) : m_random(random), m_world(world) {}

    RecipeCall set(int linkNo);
    RecipeCall largeSet(int linkNo);
    RecipeCall smallSet(int linkNo);
    FlagCall flag();
    FlagCall raisedFlag();

private:
    RecipeRecord record(int linkNo);

    RandomSource& m_random;
    RandomWorld& m_world;
};

} // namespace model

#endif
