#include "fuzzRun.h"

#include "linkedDriver.h"

#include <cstdio>
#include <cstdlib>

using namespace model;

namespace {

// The time of a call grows with what is asked of it, so the fuzzer asks for little.
enum {
    CONTEXT = 7,
    MOST_TEXT = 16,
    MOST_UNITS = 200,
    MOST_KEYS = 24,
    MOST_RECORDS = 6,
    MOST_WRITTEN = 24,
    MOST_WORDS_AT_ONCE = 700,
    MOST_GROUPS_AT_ONCE = 12,
    MOST_OFFSET = 2000,
    MOST_REPLY_BYTES = 64,
    LAST_EXCHANGES = 20
};

const DriverFunctions& renewedDriver()
{
    renewDriver();
    return linkedDriver();
}

std::string addressText(FuzzInput& input)
{
    if (input.yes()) return input.anyText(MOST_TEXT);
    std::string text = std::to_string(input.yes() ? input.number(-2, 8200) : input.anyNumber());
    if (input.yes()) text += "." + std::to_string(input.number(-1, 9));
    return text;
}

/// libFuzzer keeps the input of a process that aborts.
[[noreturn]] void fail(const std::string& call, const std::string& difference)
{
    std::fprintf(stderr, "rule broken: driver and model differ at %s\n%s", call.c_str(),
                 difference.c_str());
    std::abort();
}

} // namespace

FuzzRun::FuzzRun(const uint8_t* data, size_t size) : input(data, size), m_compared(renewedDriver())
{
    make(CallbackCall{true});
    make(FillBufferCall{1}); // words that can be told apart
}

/// What is still planned shows in the requests that come of it.
FuzzRun::~FuzzRun()
{
    for (int i = 0; i < LAST_EXCHANGES; ++i)
        exchange(true);
    if (!m_compared.damage().empty()) fail("all calls", m_compared.damage());
    renewDriver();
}

void FuzzRun::start(int retryLimit, int mergeLimit)
{
    start(std::to_string(CONTEXT) + "#" + (input.oneIn(8) ? "1" : "0") + "#0#" +
          std::to_string(retryLimit) + "#" + std::to_string(mergeLimit));
}

void FuzzRun::start(const std::string& properties)
{
    make(InitCall{!input.oneIn(16), !input.oneIn(16), !input.oneIn(16), true, true, properties, 3});
}

void FuzzRun::make(std::initializer_list<Kind> kinds)
{
    const Kind kind = kinds.begin()[input.number(0, static_cast<int>(kinds.size()) - 1)];
    if (kind == EXCHANGE) return exchange(!input.oneIn(3));
    make(callOf(kind));
    if (kind == SET_RECIPE && input.yes()) make(FlagCall{input.yes(), 1});
}

Call FuzzRun::callOf(Kind kind)
{
    const std::string area = input.areaName();
    switch (kind) {
    case ASK_IDENTITY:
        return identity();
    case CHECK:
        return CheckCall{area,
                         addressText(input),
                         input.number(-2, 2),
                         input.number(-2, 10),
                         input.yes() ? input.number(-2, 9000) : input.anyNumber(),
                         input.number(-1, 3)};
    case CHECK_VALIDITY:
        return ValidityCall{area, addressText(input), input.number(-2, 2),
                            input.yes() ? input.number(-2, 9000) : input.anyNumber(),
                            input.number(-1, 5)};
    case DESCRIBE:
        return DescribeCall{area};
    case LIST_AREAS:
        return AreaListCall{input.number(-1, 2)};
    case COPY_SERIES:
        return SeriesCall{area, input.addressNumber(), input.count(MOST_UNITS),
                          input.yes() ? input.number(-40, 40) : input.anyNumber()};
    case POLL: {
        MergeCall call;
        for (int i = input.number(0, MOST_KEYS); i > 0; --i)
            call.keys.push_back(key());
        return call;
    }
    case READ_ONCE: {
        OneShotCall call = {key(), input.number(0, 9)};
        call.key.count =
            input.count(isWordName(call.key.area) ? MOST_WORDS_AT_ONCE : MOST_GROUPS_AT_ONCE);
        return call;
    }
    case SET_RECIPE:
        return recipe();
    case MOVE_FLAG:
        return FlagCall{input.yes(), static_cast<unsigned char>(input.oneIn(4) ? 0 : 1)};
    case FILL_RECIPE:
        return FillBufferCall{static_cast<unsigned>(input.number(0, 99))};
    case WRITE: {
        SetDataCall call = {input.station(),           area, input.addressNumber(),
                            input.count(MOST_WRITTEN), {},   9};
        if (call.count > 0) call.values = input.bytes(call.count * (isWordName(area) ? 2 : 1));
        return call;
    }
    default:
        return GetDataCall{input.station(), area, input.addressNumber(), input.count(MOST_UNITS),
                           false};
    }
}

Call FuzzRun::identity()
{
    if (input.oneIn(5)) return SetPageCall{input.anyText(MOST_TEXT), input.oneIn(4)};
    return IdentityCall{static_cast<Identity>(input.number(0, 3)), input.oneIn(6)};
}

Key FuzzRun::key()
{
    Key key;
    key.station = input.station();
    key.area = input.areaName();
    key.addr = input.addressNumber();
    key.count = input.count(MOST_UNITS);
    key.unitMode = input.number(-1, 0);
    return key;
}

/// Within the recipe buffer, and where sums of addresses do not wrap around: a host answers for
/// both.
RecipeRecord FuzzRun::record()
{
    RecipeRecord record;
    record.linkNo = input.oneIn(8) ? input.anyNumber() : int(CONTEXT);
    record.station = input.oneIn(8) ? 0 : input.number(1, 2);
    record.area = input.areaName();
    record.addr = (input.yes() ? 3000 : 0) + input.number(0, MOST_UNITS);
    record.count = input.oneIn(16) ? input.number(500, 600) : input.count(MOST_UNITS);
    record.offset = input.number(record.count > 0 ? 0 : -9, MOST_OFFSET);
    return record;
}

Call FuzzRun::recipe()
{
    RecipeCall call;
    for (int i = input.number(0, MOST_RECORDS); i > 0; --i)
        call.records.push_back(record());
    return call;
}

void FuzzRun::exchange(bool isGood)
{
    make(NextFrameCall{false});
    if (isGood) return make(ReplyCall{ReplyKind::GOOD, static_cast<unsigned>(input.number(0, 99))});
    if (input.yes()) {
        const Bytes bytes = input.bytes(input.number(0, MOST_REPLY_BYTES));
        const std::string difference = m_compared.reply(bytes);
        if (!difference.empty()) fail("a reply of any bytes", difference);
        return;
    }
    const auto kind = static_cast<ReplyKind>(input.number(0, int(ReplyKind::COUNT) - 1));
    make(ReplyCall{kind, static_cast<unsigned>(input.number(0, 65535))});
}

void FuzzRun::make(const Call& call)
{
    const std::string difference = m_compared.run(call);
    if (!difference.empty()) fail(callText(call), difference);
    if (!driver.queueMutex.tryLock())
        fail(callText(call), "  the driver's mutex is still locked\n");
    driver.queueMutex.unlock();
}
