#include "minimiser.h"

#include <algorithm>

namespace model {

namespace {

enum { FIRST_DROPPED = 1 };

std::vector<Call> without(const std::vector<Call>& calls, size_t first, size_t length)
{
    std::vector<Call> rest(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(first));
    const size_t end = std::min(first + length, calls.size());
    rest.insert(rest.end(), calls.begin() + static_cast<std::ptrdiff_t>(end), calls.end());
    return rest;
}

using Fails = std::function<bool(const std::vector<Call>&)>;

std::vector<Call> withFewerCalls(std::vector<Call> calls, const Fails& fails)
{
    size_t length = std::max<size_t>(calls.size() / 2, 1);
    while (true) {
        bool dropped = false;
        for (size_t first = FIRST_DROPPED; first < calls.size();) {
            const std::vector<Call> rest = without(calls, first, length);
            if (!fails(rest)) {
                first += length;
                continue;
            }
            calls = rest;
            dropped = true;
        }
        if (length == 1 && !dropped) return calls;
        if (!dropped) length /= 2;
        length = std::max<size_t>(std::min(length, calls.size()), 1);
    }
}

/// Drops from the list of call `place`, which `items` finds in it, what the failure does not need.
template <typename Items>
void shorten(std::vector<Call>& calls, size_t place, const Items& items, const Fails& fails)
{
    for (size_t i = 0; i < items(calls[place]).size();) {
        std::vector<Call> rest = calls;
        auto& list = items(rest[place]);
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(i));
        if (fails(rest))
            calls = rest;
        else
            ++i;
    }
}

std::vector<Call> withShorterLists(std::vector<Call> calls, const Fails& fails)
{
    const auto keys = [](Call & call) -> auto&
    {
        return std::get<MergeCall>(call).keys;
    };
    const auto records = [](Call & call) -> auto&
    {
        return std::get<RecipeCall>(call).records;
    };
    for (size_t place = 0; place < calls.size(); ++place) {
        if (std::holds_alternative<MergeCall>(calls[place])) shorten(calls, place, keys, fails);
        if (std::holds_alternative<RecipeCall>(calls[place])) shorten(calls, place, records, fails);
    }
    return calls;
}

} // namespace

std::vector<Call> minimised(const std::vector<Call>& calls,
                            const std::function<bool(const std::vector<Call>&)>& fails)
{
    const std::vector<Call> few = withFewerCalls(calls, fails);
    return withFewerCalls(withShorterLists(few, fails), fails);
}

} // namespace model
