#ifndef KEY_NORMALISING_H
#define KEY_NORMALISING_H

#include "areaRow.h"
#include "quorvane_ka_kb_plc.h"

/// Counts a key's units in words, in an area with the given row, and turns a variable inside a unit
/// ("MW_BIT") into the units that hold it. Every key of this device's areas stays as it is: the
/// areas have units of 16 bits or of 1, and a key with a suffix was dropped before.
void normaliseKey(AreaRow row, KEY_ADDRESS& key);

#endif
