#include "branches.h"

#include <sys/mman.h>

#include <new>

namespace model {

namespace {

const char* const NAMES[] = {
    "offered again",
    "both flags raised",
    "chose unsendable download",
    "chose unsendable upload",
    "chose download",
    "chose upload",
    "again nothing",
    "again write",
    "again one shot",
    "again cyclic",
    "again download",
    "again upload",
    "writes in a row exhausted",
    "one shots in a row exhausted",
    "chose write",
    "chose one shot",
    "chose cyclic",
    "idle with work left",
    "idle",
    "reply nothing pending",
    "retried",
    "gave up write",
    "gave up one shot",
    "gave up cyclic",
    "gave up download",
    "gave up upload",
    "finished write not queued",
    "finished write",
    "finished one shot not queued",
    "one shot failure told",
    "one shot end told",
    "one shot end not told",
    "reads rotated",
    "reads not rotated",
    "upload goes on",
    "download goes on",
    "upload ended",
    "download ended",
    "frame write word",
    "frame write words",
    "frame write bit on",
    "frame write bit off",
    "frame write bits",
    "frame read input words",
    "frame read words",
    "frame read marker bits",
    "frame read input bits",
    "frame read bits",
    "frame read broadcast",
    "frame write broadcast",
    "reply to unsendable",
    "reply none due",
    "reply missing",
    "reply wrong length",
    "reply without crc",
    "reply wrong crc low",
    "reply wrong crc high",
    "reply wrong crc both",
    "reply read",
    "reply acknowledged",
    "decode bit of group",
    "decode bit past group",
    "decode bit before data",
    "decode bit before reply",
    "value pending shown",
    "write changes",
    "write changes nothing",
    "confirm no longer pending",
    "withdraw told",
    "withdraw silent",
    "decode unchanged under write",
    "decode unchanged",
    "decode ends pending write",
    "decode changed told",
    "decode changed silent",
    "write replaced in its queue",
    "queue of writes full",
    "write appended beside its oldest",
    "write appended",
    "one shot replaced in its queue",
    "queue of one shots full",
    "one shot appended beside its oldest",
    "one shot appended",
    "recipe too many words",
    "recipe too many bits",
    "recipe set without records",
    "recipe set during transfer",
    "recipe set merged",
    "recipe set unmerged",
    "recipe without buffer",
    "recipe unknown area",
    "recipe negative count",
    "recipe negative offset",
    "upload place without block",
    "upload without records",
    "upload word stored",
    "upload word beyond reply",
    "init keeps properties",
    "init takes properties",
    "init drops frame",
    "one shot unknown area",
    "write unknown area",
    "write local only",
    "callback not set",
    "callback told",
    "merge marker other plain group",
    "merge bit other group",
    "merge marker other group",
    "merge other area or station",
    "merge not touching",
    "merge gap too wide",
    "merge word other start",
    "merge joined touching",
    "merge joined over gap",
    "merge span too long",
    "merge gap span too long",
    "merge key dropped",
    "merge no keys",
    "merge all dropped",
    "cut without limit",
    "cut in pieces",
    "check valid",
    "check kind mismatch",
    "check out of range",
    "check unknown area",
    "check read only",
    "text odd",
    "text not a number",
    "text not byte and bit",
    "text bit minus one",
    "series clipped",
    "series word",
    "series bit",
    "intf_getProtocolType",
    "intf_getVersion",
    "intf_getDriverParameter",
    "intf_getDriverPropertyPage",
    "intf_SetDriverPropertyPage",
    "intf_setAddrValueChangeCallBack",
    "intf_initProperty",
    "intf_checkAddr",
    "intf_checkAddrValidity",
    "intf_getRegDiscription",
    "intf_getRegListByType",
    "intf_multiCopy",
    "intf_addrMerge",
    "intf_addConditionRead",
    "intf_setRcpAddress",
    "intf_getSendFrame",
    "intf_dealRcvFrame",
    "intf_getData",
    "intf_setData",
    "host sets a flag",
    "host fills the recipe buffer",
    "handed in: good reply",
    "handed in: empty reply",
    "handed in: late reply",
    "handed in: truncated reply",
    "handed in: extended reply",
    "handed in: corrupted reply",
    "handed in: wrong crc low reply",
    "handed in: wrong crc high reply",
    "handed in: other station reply",
    "handed in: other function reply",
    "handed in: exception reply",
    "handed in: noise reply",
};

static_assert(sizeof(NAMES) / sizeof(NAMES[0]) == BRANCH_COUNT, "a name for each branch");

unsigned long long* sharedCounters()
{
    void* memory = mmap(nullptr, BRANCH_COUNT * sizeof(unsigned long long), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    return static_cast<unsigned long long*>(memory);
}

} // namespace

const char* branchName(Branch branch)
{
    return NAMES[static_cast<std::size_t>(branch)];
}

unsigned long long* branchCounters()
{
    static unsigned long long* const counters = sharedCounters();
    return counters;
}

void reach(Branch branch)
{
    ++branchCounters()[static_cast<std::size_t>(branch)];
}

} // namespace model
