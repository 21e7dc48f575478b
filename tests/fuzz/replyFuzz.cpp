// Replies to one pending request of each kind: what is accepted, what reaches the cache or the
// recipe buffer, and what is left as it was.

#include "frameRules.h"
#include "fuzzHost.h"
#include "fuzzInput.h"

#include <cstring>

namespace {

enum { MOST_UNITS = 125, MOST_REPLIES = 12, MERGE_LIMIT = 125, GROUP_BITS = 16, RECIPE_OFFSET = 8 };

struct Request
{
    int station;
    QString area;
    int addr;
    int count;
};

Request anyRequest(FuzzInput& input)
{
    const QString area = input.knownArea();
    const int most = isWordName(area) ? int(MOST_UNITS) : int(GROUP_BITS);
    const int station = input.yes() ? input.usualStation() : input.number(0, 255);
    return {station, area, input.addressNumber(), input.number(1, most)};
}

KEY_ADDRESS keyOf(const Request& request)
{
    KEY_ADDRESS key;
    key.station = request.station;
    key.regName = request.area;
    key.addr = request.addr;
    key.count = request.count;
    key.unitMode = isWordName(request.area) ? 0 : -1;
    return key;
}

void poll(const Request& request)
{
    QList<KEY_ADDRESS> keys;
    keys.append(keyOf(request));
    require(intf_addrMerge(keys) == 1, "one key makes one block");
}

void readOnce(const Request& request)
{
    KEY_ADDRESS key = keyOf(request);
    if (!isWordName(request.area)) key.count = 1; // one group
    intf_addConditionRead(key, 0);
}

void transfer(FuzzHost& host, FuzzInput& input, const Request& request, RecipeFlag flag)
{
    const QByteArray values = input.bytes(2 * request.count);
    std::memcpy(host.recipe() + 2 * RECIPE_OFFSET, values.constData(), size_t(values.size()));
    _RCP_VAR_PRO record;
    record.linkNo = FuzzHost::CONTEXT;
    record.station = request.station;
    record.regName = request.area;
    record.addr = request.addr;
    record.count = request.count;
    record.bufOffset = RECIPE_OFFSET;
    QVector<_RCP_VAR_PRO> records;
    records.append(record);
    require(intf_setRcpAddress(records) == 1, "a record of this link is kept");
    host.raise(flag);
}

void plan(FuzzHost& host, FuzzInput& input, int kind, const Request& request)
{
    switch (kind) {
    case FRAME_WRITE:
        host.write(request.station, request.area, request.addr, 1, input.bytes(2));
        return;
    case FRAME_ONE_SHOT_READ:
        return readOnce(request);
    case FRAME_CYCLIC_READ:
        return poll(request);
    case FRAME_RECIPE_DOWNLOAD:
        return transfer(host, input, request, RECIPE_DOWNLOAD_FLAG);
    default:
        return transfer(host, input, request, RECIPE_UPLOAD_FLAG);
    }
}

int firstUnit(const VARIABLE& var)
{
    if (isWordName(var.regName)) return var.addr;
    const qint64 base = var.regName == QLatin1String("MX") ? 3000 : 0;
    return int((var.addr - base) / GROUP_BITS * GROUP_BITS + base);
}

/// Addresses so close to the end of the numbers that a block runs past it are not looked at.
bool endsInNumbers(const VARIABLE& var)
{
    return var.addr < 2147483647 - 4000 && var.addr > -2147483647 + 4000;
}

void requireRead(FuzzHost& host, const FRAME_PRO& frame, const QByteArray& reply)
{
    if (frame.itemCount < 1 || !endsInNumbers(frame.var)) return;
    const QByteArray expected = valuesIn(reply, frame);
    const int units = int(expected.size()) / (isWordName(frame.var.regName) ? 2 : 1);
    require(host.read(frame.var.station, frame.var.regName, firstUnit(frame.var), units) ==
                expected,
            "an accepted reply is in the cache");
}

void requireWritten(FuzzHost& host, const FRAME_PRO& frame, bool confirmed)
{
    const VARIABLE& var = frame.var;
    QByteArray shown = host.read(var.station, var.regName, var.addr, 1);
    const int bytes = int(shown.size());
    const QByteArray written(reinterpret_cast<const char*>(var.value), bytes);
    require(shown == (confirmed ? written : QByteArray(bytes, '\0')),
            "a write is kept when confirmed and withdrawn when not");
}

void requireUploaded(FuzzHost& host, const FRAME_PRO& frame, const QByteArray& before,
                     const QByteArray& reply)
{
    const char* now = reinterpret_cast<const char*>(host.recipe());
    const int start = 2 * RECIPE_OFFSET;
    const int bytes = 2 * frame.var.count;
    QByteArray expected = before;
    if (isWordName(frame.var.regName) && frame.itemCount > 0)
        expected.replace(start, bytes, valuesIn(reply, frame));
    else if (frame.itemCount > 0)
        expected.replace(start, bytes, QByteArray(now + start, bytes));
    require(expected == QByteArray(now, before.size()), "an upload fills its words and no others");
}

void exchange(FuzzHost& host, FuzzInput& input, const FRAME_PRO& frame, int kind)
{
    const QByteArray reply = anyReply(input, frame);
    const QByteArray before(reinterpret_cast<const char*>(host.recipe()),
                            2 * FuzzHost::RECIPE_WORDS);
    const int result = host.answer(reply);
    const bool accepted = result == REPLY_ACCEPTED;
    if (accepted) requireRead(host, frame, reply);
    if (kind == FRAME_WRITE && result != REPLY_RETRY) requireWritten(host, frame, accepted);
    if (kind == FRAME_RECIPE_UPLOAD && accepted)
        requireUploaded(host, frame, before, reply);
    else
        require(before == QByteArray(reinterpret_cast<const char*>(host.recipe()), before.size()),
                "only an upload changes the recipe buffer");
    if (kind >= FRAME_RECIPE_DOWNLOAD)
        require(host.isRaised(kind == FRAME_RECIPE_DOWNLOAD
                                  ? RECIPE_DOWNLOAD_FLAG
                                  : RECIPE_UPLOAD_FLAG) == (result == REPLY_RETRY),
                "the flag falls when the transfer ends");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput input(data, size);
    FuzzHost host;
    host.initialise(0, input.number(0, 3), MERGE_LIMIT);
    const int kind = input.number(FRAME_WRITE, FRAME_RECIPE_UPLOAD);
    plan(host, input, kind, anyRequest(input));

    FRAME_PRO first;
    require(host.request(first), "what was planned is offered");
    require(driver.frameKind == kind, "a request is of its kind");
    for (int i = 0; i < MOST_REPLIES && !driver.frameQueue.isEmpty(); ++i) {
        FRAME_PRO again;
        require(host.request(again), "a rejected request is offered again");
        require(again.sendLen == first.sendLen &&
                    std::memcmp(again.sendBuf, first.sendBuf, size_t(first.sendLen)) == 0,
                "a request is repeated byte by byte");
        exchange(host, input, first, kind);
    }
    require(driver.frameQueue.isEmpty(), "the retry limit ends every request");
    host.requireUntouched();
    return 0;
}
