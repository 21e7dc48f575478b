#include "values/replyHistogram.h"

const std::array<qint64, ReplyHistogram::BOUNDS>& ReplyHistogram::bounds()
{
    static const std::array<qint64, BOUNDS> ascending = {
        1000, 2000, 5000, 10000, 20000, 50000, 100000, 200000, 500000, 1000000, 2000000, 5000000};
    return ascending;
}

void ReplyHistogram::add(qint64 replyTime)
{
    if (replyTime < 0) return;
    ++count;
    sum += replyTime;
    for (int bound = BOUNDS - 1; bound >= 0 && replyTime <= bounds()[size_t(bound)]; --bound)
        ++within[size_t(bound)];
}
