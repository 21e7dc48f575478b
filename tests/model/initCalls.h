#ifndef INIT_CALLS_H
#define INIT_CALLS_H

#include "calls.h"
#include "randomSource.h"

namespace model {

/// Some property text, complete or not, and some of the host's pointers. `context` follows what
/// the driver takes for its link.
InitCall randomInit(RandomSource& random, int& context);

} // namespace model

#endif
