#ifndef MODEL_TERMINAL_H
#define MODEL_TERMINAL_H

#include <gtest/gtest.h>

#include <QStringList>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

/// A model of a terminal with the control sequences (ECMA-48) that a frame may use. Other sequences
/// fail the test.
class Terminal
{
public:
    /// The character that fills the screen at first.
    static QChar garbage()
    {
        return QLatin1Char('#');
    }

    Terminal(int columns, int rows)
        : m_columns(columns), m_lines(std::size_t(rows), QString(columns, garbage()))
    {
    }

    void write(const QByteArray& bytes)
    {
        const QString text = QString::fromUtf8(bytes);
        for (int i = 0; i < text.size(); ++i) {
            if (text.at(i) == QChar(0x1b)) {
                i = control(text, i + 2);
            } else {
                ASSERT_GE(text.at(i).unicode(), 0x20);
                put(text.at(i));
            }
        }
    }

    std::string line(int row) const
    {
        QString text = m_lines.at(std::size_t(row));
        while (text.endsWith(QLatin1Char(' ')))
            text.chop(1);
        return text.toStdString();
    }

    bool shows(QChar character) const
    {
        return std::any_of(m_lines.begin(), m_lines.end(),
                           [=](const QString& text) { return text.contains(character); });
    }

    bool isBold(int row) const
    {
        return m_boldRows.count(row) > 0;
    }

    bool isUnderlined(int row) const
    {
        return m_underlinedRows.count(row) > 0;
    }

    bool isInverse(int row) const
    {
        return m_inverseRows.count(row) > 0;
    }

    /// Number of cells that were erased or changed since the last call.
    int takeTouched()
    {
        return std::exchange(m_touched, 0);
    }

private:
    /// @return the end of the sequence whose parameters begin at `from`
    int control(const QString& text, int from)
    {
        int end = from;
        while (text.at(end) < QChar(0x40))
            ++end;
        const QStringList numbers = text.mid(from, end - from).split(QLatin1Char(';'));
        switch (text.at(end).toLatin1()) {
        case 'H':
            m_row = numbers.value(0).toInt() - 1;
            m_column = numbers.value(1).toInt() - 1;
            EXPECT_TRUE(m_row >= 0 && m_row < int(m_lines.size())) << "line " << m_row;
            break;
        case 'K':
            erase(m_row, std::min(m_column, m_columns - 1)); // a full line loses its last cell
            break;
        case 'J':
            EXPECT_EQ("", numbers.at(0).toStdString()) << "erases what it is about to write";
            erase(m_row, m_column);
            for (int row = m_row + 1; row < int(m_lines.size()); ++row)
                erase(row, 0);
            break;
        case 'm':
            if (numbers.at(0) == QLatin1String("1")) m_boldRows.insert(m_row);
            if (numbers.at(0) == QLatin1String("4")) m_underlinedRows.insert(m_row);
            if (numbers.at(0) == QLatin1String("7")) m_inverseRows.insert(m_row);
            break;
        default:
            ADD_FAILURE() << "unknown sequence " << text.mid(from, end - from + 1).toStdString();
        }
        return end;
    }

    void erase(int row, int from)
    {
        for (int column = from; column < m_columns; ++column)
            set(row, column, QLatin1Char(' '));
    }

    void put(QChar character)
    {
        ASSERT_LT(m_column, m_columns) << "writes past the line's end";
        set(m_row, m_column++, character);
    }

    void set(int row, int column, QChar character)
    {
        QString& cells = m_lines.at(std::size_t(row));
        if (cells.at(column) != character) ++m_touched;
        cells[column] = character;
    }

    const int m_columns;
    std::vector<QString> m_lines;
    std::set<int> m_boldRows;
    std::set<int> m_underlinedRows;
    std::set<int> m_inverseRows;
    int m_row = 0;
    int m_column = 0;
    int m_touched = 0;
};

#endif
