#ifndef CAPPED_LIST_H
#define CAPPED_LIST_H

#include "quorvane_ka_kb_plc.h"

#include <QList>

/// Queues a variable. An entry of the same station, area, address and count is replaced, the newest
/// first; the head never is, as it may be on the wire. A list of 513 entries takes the variable in
/// place of its last one.
void coalesceIntoCappedList(QList<VARIABLE>& list, const VARIABLE& var);

/// True when both are the same station, area, address and count.
bool namesSameBlock(const VARIABLE& a, const VARIABLE& b);

#endif
