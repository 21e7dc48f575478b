#ifndef TABLE_VIEW_H
#define TABLE_VIEW_H

#include "output/keyInput.h"
#include "output/tableOrder.h"

#include <QStringList>

#include <functional>
#include <optional>

/// What a user sees of a watch's table, and the effect of each key. It has no terminal and no
/// clock. One thread uses it.
///
///                 /                      w, and the tag can be written
///     FILTERING <--- BROWSING ------------------------> TYPING_VALUE
///         | Enter keeps  ^ ^ ^  Esc, empty, no value        | Enter, and the value fits
///         | Esc clears   | | '------------------------------+
///         '--------------' '--- y: takeWrite(); n, Esc --- CONFIRMING
///                     ? and any key: SHOWING_KEYS and back;   q: isOver()
///
/// - The mark is on a tag, not on a line: it follows the tag when the order changes. It is on a
///   shown row whenever a row is shown.
/// - A write concerns the tag that was marked when `w` was pressed.
class TableView
{
public:
    enum Mode { BROWSING, FILTERING, TYPING_VALUE, CONFIRMING, SHOWING_KEYS };
    enum Keys { WITH_KEYS, WITHOUT_KEYS };
    enum { LONGEST_INPUT = 60 }; ///< characters of a filter or a value

    /// Why the value cannot be written into the tag, in words; empty: it can.
    using ValueJudge = std::function<QString(int tag, const QString& value)>;

    struct Write
    {
        int tag;
        QString value; ///< in the user's words
    };

    /// Without keys the view shows the first rows, in the order of the file, and no mark.
    TableView(Keys keys, ValueJudge judge) : m_keys(keys), m_judge(std::move(judge)) {}

    /// The rows as they are now. The number of rows never changes.
    void update(std::vector<WatchRow> rows);

    /// The number of rows that the screen has room for, 0 or more.
    void setPage(int lines);

    void press(const Key& key);

    /// The user has ended the watch.
    bool isOver() const
    {
        return m_isOver;
    }

    /// The write that the user has confirmed since the last call.
    std::optional<Write> takeWrite();

    /// Shows a sentence in the bottom line, until the next key.
    void tell(const QString& sentence)
    {
        m_message = sentence;
    }

    bool hasKeys() const
    {
        return m_keys == WITH_KEYS;
    }
    Mode mode() const
    {
        return m_mode;
    }
    const std::vector<WatchRow>& rows() const
    {
        return m_rows;
    }
    const QString& filter() const
    {
        return m_filter;
    }

    /// All rows that pass the filter, in order.
    const std::vector<int>& order() const
    {
        return m_order;
    }

    /// Position in order() of the first row on the screen.
    int top() const
    {
        return m_top;
    }

    /// The marked tag; -1: none.
    int marked() const
    {
        return m_marked;
    }

    /// A sentence of tell() is to be shown.
    bool isTelling() const
    {
        return !m_message.isEmpty();
    }

    /// The line at the bottom of the screen: the keys, a sentence, or what the user types.
    QString bottomLine() const;

    /// Whether the end of the bottom line matters more than its beginning: the user types there.
    bool isTyping() const
    {
        return m_mode == FILTERING || m_mode == TYPING_VALUE || m_mode == CONFIRMING;
    }

private:
    void arrange();
    void scrollToMark();
    int markedPosition() const;
    void moveTo(int position);
    void move(int rows);
    void browse(const Key& key);
    void browseText(const QString& pressed);
    void typeFilter(const Key& key);
    void setFilter(const QString& filter);
    void startValue();
    void typeValue(const Key& key);
    void endValue();
    void confirm(const Key& key);
    QString browsingLine() const;
    const WatchRow& row(int tag) const
    {
        return m_rows[std::size_t(tag)];
    }

    const Keys m_keys;
    const ValueJudge m_judge;
    std::vector<WatchRow> m_rows;
    std::vector<int> m_order;
    RowOrder m_sorting = RowOrder::AS_FILED;
    QString m_filter;
    Mode m_mode = BROWSING;
    int m_marked = -1;
    int m_top = 0;
    int m_page = 0;
    int m_writeTag = -1; ///< of TYPING_VALUE and CONFIRMING
    QString m_value;     ///< typed value
    QString m_message;
    std::optional<Write> m_write;
    bool m_isOver = false;
};

/// The keys of the table in words, a line for each.
QStringList keyHelp();

#endif
