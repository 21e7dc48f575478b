#include "mergeRule.h"

#include "addressBase.h"
#include "areaClass.h"
#include "driverState.h"
#include "wrapAround.h"

enum { GROUP_BITS = 16 };

static bool inSameGroup(int a, int b)
{
    return a / GROUP_BITS == b / GROUP_BITS;
}

int judgeAddrMerge(const KEY_ADDRESS& a, const KEY_ADDRESS& b, int mode)
{
    if (a.station != b.station || a.regName != b.regName) return 1;

    const int gap = wrapSub(wrapSub(b.addr, a.addr), a.count);
    if (gap > (mode == MERGE_ADJACENT ? 0 : driver.mergeLimit)) return 1;

    if (isWordArea(a.regName)) return a.addr == b.addr ? 0 : 1;

    const int base = addressBase(a.regName, BITS);
    const bool markers = base != 0;
    // Adjacent markers must share both groupings. 3000 is no multiple of 16, so this confines them
    // to 8 bits; the pass that reads across gaps tests the marker group alone and joins the halves.
    const bool testPlainGroup = isBitArea(a.regName) && (!markers || mode == MERGE_ADJACENT);
    if (testPlainGroup && !inSameGroup(a.addr, b.addr)) return 1;
    return markers && !inSameGroup(wrapSub(a.addr, base), wrapSub(b.addr, base)) ? 1 : 0;
}
