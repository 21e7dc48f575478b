#ifndef TABLE_ORDER_H
#define TABLE_ORDER_H

#include "output/watchRow.h"

#include <vector>

/// The order of the rows of a watch. Rows that are equal in it stay in the order of the tag file.
enum class RowOrder {
    AS_FILED,
    NAME,
    CHANGE, ///< the latest change first; tags without a change last
    TROUBLE ///< bad tags first
};

/// The order behind this order; behind the last the first.
RowOrder nextOrder(RowOrder order);

/// The name of the order for the user, such as "file order".
QString orderText(RowOrder order);

/// The indices of the rows to show, in order.
/// @param filter  part of the name or the address, in either case; empty: all rows
std::vector<int> shownRows(const std::vector<WatchRow>& rows, const QString& filter,
                           RowOrder order);

#endif
