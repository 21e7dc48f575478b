#ifndef RECIPES_H
#define RECIPES_H

#include "quorvane_ka_kb_plc.h"

/// Fills the variable that a frame is built from with one recipe block; withData nonzero: with as
/// many values of the recipe buffer as VALUE_BYTES hold. varId stays as it was.
void rcpAddrToVar(const _RCP_VAR_PRO& rec, VARIABLE& var, int withData);

/// False for a block that no frame can transfer: an unknown area, a count below 0, or no place in
/// the recipe buffer.
bool isTransferable(const _RCP_VAR_PRO& rec);

#endif
