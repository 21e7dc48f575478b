#include "history/rowSummary.h"

#include <cmath>

double smallerNumber(double a, double b)
{
    return std::fmin(a, b);
}

double largerNumber(double a, double b)
{
    return std::fmax(a, b);
}

void RowSummary::add(const HistoryRow& row)
{
    RowSummary one;
    one.rows = 1;
    one.begin = one.end = row.time;
    one.isGood = one.endsGood = row.isGood();
    if (one.isGood) one.minimum = one.maximum = one.last = row.value;
    add(one);
}

void RowSummary::add(const RowSummary& next)
{
    if (next.rows == 0) return;
    const RowSummary before = *this;
    *this = next;
    if (before.rows == 0) return;
    rows = before.rows + next.rows;
    begin = before.begin;
    if (!before.isGood) return;
    isGood = true;
    minimum = next.isGood ? smallerNumber(before.minimum, next.minimum) : before.minimum;
    maximum = next.isGood ? largerNumber(before.maximum, next.maximum) : before.maximum;
    if (!next.isGood) last = before.last;
}
