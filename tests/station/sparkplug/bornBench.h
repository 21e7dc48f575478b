#ifndef BORN_BENCH_H
#define BORN_BENCH_H

#include "edgeBench.h"

#include <gtest/gtest.h>

/// A bench whose stations answer, and whose births are out.
struct BornBench : EdgeBench
{
    BornBench()
    {
        beBorn();
        take({reading("oven", "temperature", 20.5), reading("oven", "door", 1),
              standing("oven", 1, true)});
        take({reading("mill", "speed", -70000), standing("mill", 1, true)});
    }
};

/// What a birth says of a tag.
inline const ReceivedMetric& entry(const Told& birth, const char* tag)
{
    static const ReceivedMetric none;
    const ReceivedMetric* const metric = birth.payload.named(tag);
    EXPECT_NE(nullptr, metric) << tag;
    return metric != nullptr ? *metric : none;
}

#endif
