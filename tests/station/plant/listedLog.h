#ifndef LISTED_LOG_H
#define LISTED_LOG_H

#include "plant/logPosition.h"

#include <algorithm>

/// A history as a plain list. The test commits, drops, and takes it away.
class ListedLog : public SampleLog
{
public:
    /// The row gets the next number. It is in the log at the next commit.
    quint64 note(Sample sample)
    {
        sample.number = ++m_numbers;
        m_noted.push_back(sample);
        return m_numbers;
    }

    void commit(qint64 time = 0)
    {
        for (const Sample& sample : m_noted)
            m_rows.push_back({++m_sequence, sample});
        m_noted.clear();
        m_position.file = m_file;
        m_position.sequence = m_sequence;
        m_position.number = m_numbers;
        m_position.firstNumber = m_firstNumber;
        m_position.time = time;
    }

    /// The station starts anew. What was not committed is gone.
    void restart()
    {
        m_noted.clear();
        m_numbers = m_firstNumber = 0;
        m_position = LogPosition();
    }

    /// The next rows go into another file.
    void changeFile()
    {
        ++m_file;
        m_rows.clear();
        m_sequence = 0;
        m_firstNumber = m_position.number;
    }

    /// A loss of power took the newest rows with it. @return the rows
    std::vector<Sample> loseNewest(size_t rows)
    {
        std::vector<Sample> lost;
        for (; rows > 0 && !m_rows.empty() && m_rows.back().sequence == m_sequence; --rows) {
            lost.push_back(m_rows.back().sample);
            m_rows.pop_back();
            --m_sequence;
        }
        return lost;
    }

    /// The cap takes rows of the oldest. @return the row
    Sample drop(size_t index)
    {
        const Sample dropped = m_rows[index].sample;
        m_rows.erase(m_rows.begin() + std::ptrdiff_t(index));
        return dropped;
    }

    const std::vector<LoggedRow>& all() const
    {
        return m_rows;
    }

    LogPosition position() const override
    {
        return m_position;
    }

    std::vector<LoggedRow> rowsBehind(qint64 sequence, qint64 last, int most) override
    {
        std::vector<LoggedRow> found;
        if (readFails()) return found;
        const auto isBehind = [](qint64 before, const LoggedRow& row) {
            return before < row.sequence;
        };
        auto row = std::upper_bound(m_rows.begin(), m_rows.end(), sequence, isBehind);
        for (; row != m_rows.end() && row->sequence <= last && int(found.size()) < most; ++row) {
            found.push_back(*row);
            found.back().sample.number = 0;
        }
        rowsRead += qint64(found.size());
        return found;
    }

    qint64 oldestSequence() override
    {
        return readFails() || m_rows.empty() ? 0 : m_rows.front().sequence;
    }

    int failures = 0; ///< so many reads from now on fail
    qint64 rowsRead = 0;

private:
    bool readFails()
    {
        return failures > 0 && failures-- > 0;
    }

    std::vector<LoggedRow> m_rows;
    std::vector<Sample> m_noted;
    qint64 m_file = 1, m_sequence = 0;
    quint64 m_numbers = 0, m_firstNumber = 0;
    LogPosition m_position;
};

#endif
