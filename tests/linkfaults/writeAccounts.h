#ifndef WRITE_ACCOUNTS_H
#define WRITE_ACCOUNTS_H

#include <deque>
#include <map>
#include <set>
#include <string>
#include <tuple>

struct Element
{
    int station;
    std::string area;
    int number;

    bool operator<(const Element& other) const
    {
        return std::tie(station, area, number) < std::tie(other.station, other.area, other.number);
    }

    bool operator==(const Element& other) const
    {
        return station == other.station && area == other.area && number == other.number;
    }
};

struct BookedWrite
{
    int id; ///< of the host's call, which may write several elements
    Element element;
    int value;
};

/// Every write of the host from the call to its end.
class WriteAccounts
{
public:
    /// The driver puts it in the place of an open one of its element, unless that is the oldest.
    void open(const BookedWrite& write);

    /// @return false when another write's turn has come
    bool isOldest(int id, const Element& element) const;

    const BookedWrite& oldest() const
    {
        return m_open.front();
    }

    void confirmOldest();
    void withdrawOldest();

    /// The value that the host wrote last; the driver shows it as confirmed when an older one is.
    int newestValue(const Element& element) const
    {
        return m_newest.at(element);
    }

    /// What each written element may hold: the newest confirmed value, or one that was withdrawn
    /// after it, as its request may have arrived.
    const std::map<Element, std::set<int>>& writtenElements() const
    {
        return m_possible;
    }

    int openCount() const
    {
        return static_cast<int>(m_open.size());
    }

    bool isBalanced() const
    {
        return opened == confirmed + withdrawn + replaced + openCount();
    }

    int opened = 0;
    int confirmed = 0;
    int withdrawn = 0;
    int replaced = 0;

private:
    std::deque<BookedWrite> m_open;
    std::map<Element, std::set<int>> m_possible;
    std::map<Element, int> m_newest;
};

#endif
