#ifndef ROW_SUMMARY_H
#define ROW_SUMMARY_H

#include "history/historyRow.h"

/// What rows of one tag that follow each other have in common, so that a query need not read each
/// of them.
struct RowSummary
{
    qint64 rows = 0;                           ///< 0: the other members say nothing
    qint64 begin = 0, end = 0;                 ///< times of the first and the last row
    bool isGood = false;                       ///< a row is good
    bool endsGood = false;                     ///< the last row is good: its value holds on
    double minimum = 0, maximum = 0, last = 0; ///< of the good rows; only when isGood

    void add(const HistoryRow& row);

    /// Adds rows that follow.
    void add(const RowSummary& next);
};

/// The smaller and the larger number. A nan is the result only of two nans.
double smallerNumber(double a, double b);
double largerNumber(double a, double b);

#endif
