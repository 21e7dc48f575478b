// Property texts: what is read from them, and the calls that the numbers govern.

#include "frameRules.h"
#include "fuzzHost.h"
#include "fuzzInput.h"

#include <algorithm>
#include <vector>

namespace {

enum {
    PARTS = 5,
    SURE_DIGITS = 9,
    MOST_TEXT = 80,
    MOST_CALLS = 12,
    MOST_STEPS = 20,
    MOST_UNITS = 60
};

typedef std::vector<std::string> Parts;

Parts partsOf(const std::string& text)
{
    Parts parts(1);
    for (char c : text) {
        if (c == '#')
            parts.emplace_back();
        else
            parts.back() += c;
    }
    return parts;
}

bool isPlainNumber(const std::string& part)
{
    const std::string digits = part.substr(part.compare(0, 1, "-") == 0 ? 1 : 0);
    return !digits.empty() && digits.size() <= SURE_DIGITS &&
           digits.find_first_not_of("0123456789") == std::string::npos;
}

/// Blanks, signs and long numbers in between are not looked at.
void requireNumber(int number, const std::string& part)
{
    if (isPlainNumber(part)) require(number == std::stoi(part), "a number is read");
    if (part.find_first_of("0123456789") == std::string::npos)
        require(number == 0, "what is no number counts as 0");
    const bool letter = std::any_of(part.begin(), part.end(),
                                    [](char c) { return (c >= 'a' && c <= 'z') || c == '.'; });
    if (letter) require(number == 0, "a number is decimal and whole");
}

std::vector<int> numbersInForce()
{
    return {driver.callbackContext, driver.localOnly, driver.propC, driver.retryLimit,
            driver.mergeLimit};
}

void initialise(FuzzHost& host, const std::string& text)
{
    const std::vector<int> before = numbersInForce();
    host.initialise(text);
    const Parts parts = partsOf(text);
    if (parts.size() < PARTS) {
        require(numbersInForce() == before, "too few parts change nothing");
        return;
    }
    for (size_t i = 0; i < PARTS; ++i)
        requireNumber(numbersInForce()[i], parts[i]);
}

/// Numbers in the text's own form, so that the calls behind are reached with any of them.
std::string anyProperties(FuzzInput& input)
{
    if (input.yes()) return input.cText(MOST_TEXT);
    std::string text;
    for (int i = 0; i < PARTS; ++i) {
        if (i > 0) text += '#';
        text += std::to_string(input.yes() ? input.number(-1, 130) : input.anyNumber());
    }
    return text;
}

KEY_ADDRESS anyKey(FuzzInput& input)
{
    KEY_ADDRESS key;
    key.station = input.usualStation();
    key.regName = input.areaName();
    key.addr = input.addressNumber();
    key.count = input.count(MOST_UNITS);
    key.unitMode = input.number(-1, 0);
    return key;
}

void setRecipe(FuzzInput& input)
{
    QVector<_RCP_VAR_PRO> records;
    for (int i = input.number(0, 3); i > 0; --i) {
        _RCP_VAR_PRO record;
        record.linkNo = input.yes() ? driver.callbackContext : input.anyNumber();
        record.station = 1;
        record.regName = input.wordArea();
        record.addr = input.addressNumber();
        record.count = input.count(MOST_UNITS);
        record.bufOffset = input.number(0, MOST_UNITS);
        records.append(record);
    }
    const int kept = intf_setRcpAddress(records);
    require(kept <= int(records.size()), "no record is made up");
}

void call(FuzzHost& host, FuzzInput& input)
{
    const QString area = input.knownArea();
    KEY_ADDRESS key = anyKey(input);
    QList<KEY_ADDRESS> keys;
    switch (input.number(0, 5)) {
    case 0:
        keys.append(key);
        keys.append(anyKey(input));
        intf_addrMerge(keys);
        return;
    case 1:
        intf_addConditionRead(key, 1);
        require(driver.condReadList.size() <= 513, "the one-shot queue holds 513 blocks");
        return;
    case 2: {
        const int queued = int(driver.writeList.size());
        host.write(1, area, key.addr, key.count, input.bytes(8));
        if (driver.localOnly != 0)
            require(driver.writeList.size() == queued, "local writes are not queued");
        return;
    }
    case 3:
        setRecipe(input);
        return host.raise(input.yes() ? RECIPE_DOWNLOAD_FLAG : RECIPE_UPLOAD_FLAG);
    case 4:
        host.lower(RECIPE_DOWNLOAD_FLAG);
        return host.lower(RECIPE_UPLOAD_FLAG);
    default:
        host.read(1, area, key.addr, key.count);
    }
}

void exchange(FuzzHost& host, FuzzInput& input)
{
    FRAME_PRO frame;
    for (int i = 0; i < MOST_STEPS && input.isLeft() && host.request(frame); ++i)
        host.answer(anyReply(input, frame));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput input(data, size);
    FuzzHost host;
    while (input.isLeft()) {
        initialise(host, anyProperties(input));
        for (int i = 0; i < MOST_CALLS && input.isLeft(); ++i)
            call(host, input);
        exchange(host, input);
    }
    host.requireUntouched();
    return 0;
}
