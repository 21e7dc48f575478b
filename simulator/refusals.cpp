#include "refusals.h"

#include "numberText.h"
#include "placeText.h"

#include <algorithm>

namespace {

const int LAST_CODE = 255;

MemorySpan spanBetween(const Place& first, const Place& last)
{
    MemorySpan span = spanOf(first);
    const MemorySpan end = spanOf(last);
    span.count = end.first + end.count - span.first;
    return span;
}

bool isNumber(const std::string& text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

bool concerns(const Refusal& refusal, const RequestedMemory& requested)
{
    if (refusal.access == REFUSES_WRITES && requested.access != ACCESS_WRITE) return false;
    return std::any_of(
        requested.spans.begin(), requested.spans.end(),
        [&refusal](const MemorySpan& span) { return doOverlap(refusal.span, span); });
}

} // namespace

std::string parseRefusal(const std::string& text, Refusal& refusal)
{
    std::vector<std::string> fields = fieldsOf(text, ':');
    Refusal parsed;
    if (fields.size() > 1 && fields.back() == "write") {
        parsed.access = REFUSES_WRITES;
        fields.pop_back();
    }
    const std::size_t rangeAt = fields.size() > 1 && isNumber(fields.front()) ? 1 : 0;
    if (fields.size() > rangeAt + 2)
        return "'" + text + "' is not [STATION:]FIRST[..LAST][:CODE][:write]";
    if (fields.size() == rangeAt + 2 && !readNumber(fields.back(), 1, LAST_CODE, parsed.code))
        return outside("exception code", fields.back(), 1, LAST_CODE);
    Place first;
    Place last;
    const std::string range = rangeAt == 1 ? fields[0] + ":" + fields[1] : fields[0];
    std::string trouble = parseRange(range, first, last);
    if (!trouble.empty()) return trouble;
    parsed.station = first.station;
    parsed.span = spanBetween(first, last);
    refusal = parsed;
    return {};
}

std::optional<int> refusalOf(const std::vector<Refusal>& refusals, const Bytes& request,
                             int station)
{
    if (refusals.empty()) return std::nullopt;
    const std::optional<RequestedMemory> requested = requestedMemory(request);
    if (!requested) return std::nullopt;
    for (const Refusal& refusal : refusals) {
        if (refusal.station == station && concerns(refusal, *requested)) return refusal.code;
    }
    return std::nullopt;
}
