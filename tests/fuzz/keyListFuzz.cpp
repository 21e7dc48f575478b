// Lists of keys and recipe records: what is planned from them, and that every frame of it can be
// asked for and answered.

#include "frameRules.h"
#include "fuzzHost.h"
#include "fuzzInput.h"

namespace {

// The time of a call grows with what is asked of it, so the fuzzer asks for little.
enum {
    MOST_KEYS = 24,
    MOST_UNITS = 200,
    MOST_PLAIN_ADDRESS = 70000,
    MOST_PLAIN_STATION = 255,
    MOST_WORDS_AT_ONCE = 700,
    MOST_GROUPS_AT_ONCE = 12,
    MOST_STEPS = 80,
    MOST_QUEUED = 513,
    LAST_OFFSET = FuzzHost::RECIPE_WORDS - 2 * MOST_UNITS
};

KEY_ADDRESS anyKey(FuzzInput& input)
{
    KEY_ADDRESS key;
    key.station = input.station();
    key.regName = input.areaName();
    key.addr = input.addressNumber();
    key.count = input.count(MOST_UNITS);
    key.unitMode = input.number(-1, 0);
    key.param2 = input.number(0, 3);
    return key;
}

/// Past these, sums and sort keys wrap around.
template <typename Record> bool isPlain(const Record& record)
{
    return record.addr >= 0 && record.addr <= MOST_PLAIN_ADDRESS && record.count > 0 &&
           record.station >= 0 && record.station <= MOST_PLAIN_STATION;
}

bool isKnown(const QString& area)
{
    return driver.regNames.contains(area);
}

template <typename Part, typename Whole> bool covers(const Whole& whole, const Part& part)
{
    return whole.station == part.station && whole.regName == part.regName &&
           whole.addr <= part.addr &&
           qint64(part.addr) + part.count <= qint64(whole.addr) + whole.count;
}

bool isPolled(const KEY_ADDRESS& key)
{
    for (const VARIABLE& block : qAsConst(driver.readList)) {
        if (covers(block, key)) return true;
    }
    return false;
}

bool isSomeKeys(const QList<KEY_ADDRESS>& keys, const VARIABLE& block)
{
    for (const KEY_ADDRESS& key : keys) {
        if (key.count == block.count && key.addr == block.addr && key.regName == block.regName)
            return true;
    }
    return false;
}

void merge(FuzzInput& input)
{
    QList<KEY_ADDRESS> keys;
    for (int i = input.number(0, MOST_KEYS); i > 0; --i)
        keys.append(anyKey(input));
    const QList<KEY_ADDRESS> given = keys;
    const int blocks = intf_addrMerge(keys);
    require(blocks == int(driver.readList.size()) && blocks <= int(given.size()),
            "merging makes no more blocks than keys");
    require(keys.size() == given.size(), "the host's list is left as it is");
    for (int i = 0; i < int(given.size()); ++i) {
        const KEY_ADDRESS& key = given.at(i);
        require(keys.at(i).addr == key.addr && keys.at(i).count == key.count,
                "the host's keys are left as they are");
        if (isPlain(key) && isKnown(key.regName)) require(isPolled(key), "every key is polled");
    }
    for (const VARIABLE& block : qAsConst(driver.readList)) {
        require(isKnown(block.regName), "only known areas are polled");
        require(block.count <= driver.mergeLimit || isSomeKeys(given, block),
                "merging keeps to its limit");
    }
}

bool isSameBlock(const VARIABLE& a, const VARIABLE& b)
{
    return a.station == b.station && a.addr == b.addr && a.count == b.count &&
           a.regName == b.regName;
}

void readOnce(FuzzInput& input)
{
    KEY_ADDRESS key = anyKey(input);
    const bool words = isWordName(key.regName);
    key.count = input.count(words ? int(MOST_WORDS_AT_ONCE) : int(MOST_GROUPS_AT_ONCE));
    const int before = int(driver.condReadList.size());
    require(intf_addConditionRead(key, input.number(0, 9)) == 1, "a one-shot read returns 1");

    const QList<VARIABLE>& queue = driver.condReadList;
    require(queue.size() <= MOST_QUEUED, "the one-shot queue holds 513 blocks");
    if (!isKnown(key.regName)) {
        require(queue.size() == before, "an unknown area queues nothing");
        return;
    }
    int found = 0;
    for (int i = 1; i < int(queue.size()); ++i)
        found += isSameBlock(queue.at(i), driver.condVar) ? 1 : 0;
    require(found == 1 || (found == 0 && isSameBlock(queue.at(0), driver.condVar)),
            "the block queued last stands in the queue, once behind the oldest");
}

_RCP_VAR_PRO anyRecord(FuzzInput& input)
{
    _RCP_VAR_PRO record;
    record.linkNo = input.number(0, 7) == 0 ? input.anyNumber() : int(FuzzHost::CONTEXT);
    record.station = input.station();
    record.regName = input.areaName();
    record.addr = input.addressNumber();
    record.count = input.count(MOST_UNITS);
    record.bufOffset = input.number(-1, LAST_OFFSET);
    return record;
}

/// Each block serves the records from its own start to that of the next.
void requireBlocksServeRecords()
{
    const QList<qint32>& starts = driver.blockStartIndex;
    const QVector<_RCP_VAR_PRO>& records = driver.rcpVarsStaged;
    require(starts.size() == driver.rcpVars.size() && starts.at(0) == 0, "each block has a start");
    for (int b = 0; b < int(starts.size()); ++b) {
        const bool last = b + 1 == int(starts.size());
        const int end = last ? int(records.size()) : starts.at(b + 1);
        require(starts.at(b) < end && end <= int(records.size()), "the blocks share the records");
        require(driver.rcpVars.at(b).bufOffset == records.at(starts.at(b)).bufOffset,
                "a block starts at its first record's offset");
        for (int i = starts.at(b); i < end; ++i) {
            if (isPlain(records.at(i)) && isKnown(records.at(i).regName))
                require(covers(driver.rcpVars.at(b), records.at(i)), "a block covers its records");
        }
    }
}

void setRecipe(FuzzHost& host, FuzzInput& input)
{
    QVector<_RCP_VAR_PRO> records;
    int ours = 0;
    for (int i = input.number(0, MOST_KEYS); i > 0; --i) {
        records.append(anyRecord(input));
        if (records.back().linkNo == FuzzHost::CONTEXT) ++ours;
    }
    const int given = int(records.size());
    require(intf_setRcpAddress(records) == ours, "the records of this link are kept");
    require(records.size() == given, "the host's records are left as they are");
    if (ours == 0) return;
    requireBlocksServeRecords();
    if (input.yes()) host.raise(input.yes() ? RECIPE_DOWNLOAD_FLAG : RECIPE_UPLOAD_FLAG);
}

void exchange(FuzzHost& host, FuzzInput& input)
{
    FRAME_PRO frame;
    for (int i = input.number(0, MOST_STEPS); i > 0 && host.request(frame); --i)
        host.answer(input.number(0, 3) == 0 ? anyReply(input, frame) : goodReply(input, frame));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput input(data, size);
    FuzzHost host;
    host.initialise(0, input.number(0, 3),
                    input.number(0, 9) == 0 ? input.number(-1, 1) : input.number(1, 125));
    while (input.isLeft()) {
        switch (input.number(0, 3)) {
        case 0:
            merge(input);
            break;
        case 1:
            readOnce(input);
            break;
        case 2:
            setRecipe(host, input);
            break;
        default:
            exchange(host, input);
        }
    }
    host.requireUntouched();
    return 0;
}
