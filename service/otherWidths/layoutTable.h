#ifndef LAYOUT_TABLE_H
#define LAYOUT_TABLE_H

#include "unitLayout.h"
#include "variableElements.h"

// Layouts of register tables with 8-bit or 32-bit units, or with bits inside wider units. This
// device's table has none of them; other devices of the family have. No file of this folder runs
// for MW, IW, QW, MX, IX or QX.

/// The work of the four calls on the units of one layout.
struct LAYOUT_FUNCTIONS
{
    /// Marks the units for reporting.
    void (*mark)(const VARIABLE_ELEMENTS& elements);
    /// Copies the values that the host sees to `out`.
    void (*read)(const VARIABLE_ELEMENTS& elements, unsigned char* out);
    /// Keeps the host's values as pending writes and reports what changes.
    void (*store)(const VARIABLE_ELEMENTS& elements, const unsigned char* values);
    /// Ends the pending writes; reports the fall back to the read values if not confirmed.
    void (*complete)(const VARIABLE_ELEMENTS& elements, bool confirmed);
};

/// The functions of any layout but BIT_UNIT and WORD_UNIT. Those of NO_UNITS do nothing, and so do
/// those that no pair of widths leads to.
const LAYOUT_FUNCTIONS& functionsOfLayout(UnitLayout layout);

#endif
