#ifndef EDITOR_CALLS_H
#define EDITOR_CALLS_H

#include "calls.h"
#include "randomWorld.h"

namespace model {

/// A call that the host's editor makes: identity, address checks, area lists, address series.
Call editorCall(RandomSource& random, RandomWorld& world);

} // namespace model

#endif
