#include "cappedList.h"

enum { LAST_INDEX = 512 };

bool namesSameBlock(const VARIABLE& a, const VARIABLE& b)
{
    return a.addr == b.addr && a.station == b.station && a.count == b.count &&
           a.regName == b.regName;
}

void coalesceIntoCappedList(QList<VARIABLE>& list, const VARIABLE& var)
{
    const QList<VARIABLE>& queued = list;
    for (int i = int(queued.size()) - 1; i >= 1; --i) {
        if (namesSameBlock(queued.at(i), var)) {
            list[i] = var;
            return;
        }
    }
    if (list.size() > LAST_INDEX)
        list[LAST_INDEX] = var;
    else
        list.append(var);
}
