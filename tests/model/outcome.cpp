#include "outcome.h"

#include "calls.h"

#include <algorithm>
#include <sstream>

namespace model {

namespace {

std::string both(const std::string& what, const std::string& expected, const std::string& actual)
{
    return "  " + what + "\n    expected " + expected + "\n    actual   " + actual + "\n";
}

std::string numberText(int number)
{
    return std::to_string(number);
}

std::string quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

std::string toldText(const Notification& told)
{
    return "(" + std::to_string(told.context) + ", " + std::to_string(told.station) + ", " +
           quoted(told.name) + ", " + std::to_string(told.addr) + " value " + hexText(told.seen) +
           ")";
}

bool sameNotification(const Notification& a, const Notification& b)
{
    return a.context == b.context && a.station == b.station && a.name == b.name &&
           a.addr == b.addr && a.seen == b.seen;
}

template <typename Value, typename Text>
std::string listText(const std::vector<Value>& values, Text text)
{
    std::string all = std::to_string(values.size()) + ":";
    for (const Value& value : values)
        all += " " + text(value);
    return all;
}

std::string compareValue(const Bytes& expected, const Bytes& actual)
{
    const size_t length = std::min(expected.size(), actual.size());
    const Bytes meant(actual.begin(), actual.begin() + static_cast<std::ptrdiff_t>(length));
    return expected == meant ? "" : both("var.value", hexText(expected), hexText(meant));
}

std::string compareVariable(const Variable& expected, const Variable& actual)
{
    const auto text = [](const Variable& var) {
        std::ostringstream out;
        out << "id " << var.varId << " station " << var.station << " " << quoted(var.area) << " "
            << var.addr << " count " << var.count;
        return out.str();
    };
    const std::string head =
        text(expected) == text(actual) ? "" : both("var", text(expected), text(actual));
    return head + compareValue(expected.value, actual.value);
}

std::string compareUnsendable(const Frame& expected, const Frame& actual)
{
    Variable place = expected.var;
    place.value.clear();
    std::string all = compareVariable(place, actual.var);
    if (!actual.bytes.empty()) all += both("bytes to send", "none", hexText(actual.bytes));
    return all;
}

std::string compareFrame(const Frame& expected, const Frame& actual)
{
    if (expected.unsendable) return compareUnsendable(expected, actual);
    const auto lengths = [](const Frame& frame) {
        return "sendLen " + numberText(static_cast<int>(frame.bytes.size())) + " recvLen " +
               numberText(frame.recvLen) + " dataStart " + numberText(frame.dataStart) +
               " itemCount " + numberText(frame.itemCount);
    };
    std::string all;
    if (expected.bytes != actual.bytes)
        all += both("request", hexText(expected.bytes), hexText(actual.bytes));
    if (lengths(expected) != lengths(actual))
        all += both("frame", lengths(expected), lengths(actual));
    return all + compareVariable(expected.var, actual.var);
}

std::string compareFrames(const Outcome& expected, const Outcome& actual)
{
    if (expected.frame.has_value() != actual.frame.has_value())
        return both("frame", expected.frame ? "one" : "none", actual.frame ? "one" : "none");
    return expected.frame ? compareFrame(*expected.frame, *actual.frame) : "";
}

} // namespace

std::string difference(const Outcome& expected, const Outcome& actual)
{
    std::string all;
    if (expected.result != actual.result)
        all += both("result", numberText(expected.result), numberText(actual.result));
    if (expected.numbers != actual.numbers)
        all += both("numbers", listText(expected.numbers, numberText),
                    listText(actual.numbers, numberText));
    if (expected.texts != actual.texts)
        all += both("texts", listText(expected.texts, quoted), listText(actual.texts, quoted));
    if (expected.bytes != actual.bytes)
        all += both("bytes", hexText(expected.bytes), hexText(actual.bytes));
    if (!std::equal(expected.notifications.begin(), expected.notifications.end(),
                    actual.notifications.begin(), actual.notifications.end(), sameNotification))
        all += both("callbacks", listText(expected.notifications, toldText),
                    listText(actual.notifications, toldText));
    return all + compareFrames(expected, actual);
}

std::string difference(const HostMemory& expected, const HostMemory& actual)
{
    std::string all;
    if (expected.downloadFlag != actual.downloadFlag)
        all += both("download flag", numberText(expected.downloadFlag),
                    numberText(actual.downloadFlag));
    if (expected.uploadFlag != actual.uploadFlag)
        all += both("upload flag", numberText(expected.uploadFlag), numberText(actual.uploadFlag));
    if (expected.recipe == actual.recipe) return all;
    const auto firsts = std::mismatch(expected.recipe.begin(), expected.recipe.end(),
                                      actual.recipe.begin(), actual.recipe.end());
    const auto place = static_cast<int>(firsts.first - expected.recipe.begin());
    return all + both("recipe buffer at byte " + numberText(place), numberText(*firsts.first),
                      numberText(*firsts.second));
}

} // namespace model
