#ifndef RECIPES_H
#define RECIPES_H

#include "quorvane_ka_kb_plc.h"

/// Makes one recipe block the variable that a frame is built from; withData: with its values from
/// the recipe buffer, as many as VALUE_BYTES hold. varId is left as it was.
void rcpAddrToVar(const _RCP_VAR_PRO& rec, VARIABLE& var, int withData);

/// False for a block that no frame can stand for: of an unknown area, of fewer than 0 units, or
/// without a place in the recipe buffer.
bool isTransferable(const _RCP_VAR_PRO& rec);

#endif
