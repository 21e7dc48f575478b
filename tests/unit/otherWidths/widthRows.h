#ifndef WIDTH_ROWS_H
#define WIDTH_ROWS_H

#include "cacheHelpers.h"

/// Calls `call` with widths and name of every unit layout and each count that stands for no unit.
template <typename Call> void forEachLayoutBelowOne(Call call)
{
    const char* const layouts[][3] = {
        {"1", "1", "V"},      {"1", "16", "V_bit"}, {"1", "8", "V_bit"}, {"8", "8", "V"},
        {"8", "16", "V_bit"}, {"8", "8", "V_bit"},  {"16", "16", "V"},   {"16", "8", "V"},
        {"32", "8", "V"},     {"32", "16", "V"},    {"32", "32", "V"},
    };
    for (const auto& layout : layouts) {
        for (int count : {0, -1, -2, -16, LOWEST + 2, LOWEST + 1, int(LOWEST)}) {
            SCOPED_TRACE(testing::Message()
                         << layout[0] << "/" << layout[1] << " " << layout[2] << " x" << count);
            call(layout[0], layout[1], layout[2], count);
        }
    }
}

#endif
