#ifndef CAPPED_LIST_H
#define CAPPED_LIST_H

#include "quorvane_ka_kb_plc.h"

#include <QList>

/// Queues a variable. It replaces the newest entry of the same station, area, address and count,
/// but never the head, which may be on the wire. In a full list of 513 entries it replaces the last
/// one.
void coalesceIntoCappedList(QList<VARIABLE>& list, const VARIABLE& var);

/// True when both are the same station, area, address and count.
bool namesSameBlock(const VARIABLE& a, const VARIABLE& b);

#endif
