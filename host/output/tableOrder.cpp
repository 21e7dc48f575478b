#include "output/tableOrder.h"

#include <algorithm>

namespace {

bool passes(const WatchRow& row, const QString& filter)
{
    return row.name.contains(filter, Qt::CaseInsensitive) ||
           row.address.contains(filter, Qt::CaseInsensitive);
}

bool isBefore(const WatchRow& first, const WatchRow& second, RowOrder order)
{
    switch (order) {
    case RowOrder::NAME:
        return QString::compare(first.name, second.name, Qt::CaseInsensitive) < 0;
    case RowOrder::CHANGE:
        return first.changedAt > second.changedAt;
    case RowOrder::TROUBLE:
        return !first.good && second.good;
    case RowOrder::AS_FILED:
        break;
    }
    return false;
}

} // namespace

RowOrder nextOrder(RowOrder order)
{
    return order == RowOrder::TROUBLE ? RowOrder::AS_FILED : RowOrder(int(order) + 1);
}

QString orderText(RowOrder order)
{
    switch (order) {
    case RowOrder::NAME:
        return QString::fromLatin1("name");
    case RowOrder::CHANGE:
        return QString::fromLatin1("latest change");
    case RowOrder::TROUBLE:
        return QString::fromLatin1("trouble");
    case RowOrder::AS_FILED:
        break;
    }
    return QString::fromLatin1("file order");
}

std::vector<int> shownRows(const std::vector<WatchRow>& rows, const QString& filter, RowOrder order)
{
    std::vector<int> shown;
    for (int i = 0; i < int(rows.size()); ++i) {
        if (passes(rows[std::size_t(i)], filter)) shown.push_back(i);
    }
    std::stable_sort(shown.begin(), shown.end(), [&rows, order](int first, int second) {
        return isBefore(rows[std::size_t(first)], rows[std::size_t(second)], order);
    });
    return shown;
}
