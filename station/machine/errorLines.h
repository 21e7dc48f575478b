#ifndef ERROR_LINES_H
#define ERROR_LINES_H

#include <QByteArray>
#include <QString>

#include <mutex>

/// Writes lines to a descriptor, each line by one call, so that lines of several threads never mix.
/// It never waits: a link's thread must not stand still because nobody reads the record. A line for
/// which there is no room is left out, and the next line that has room says how many were.
/// Any thread calls it.
class ErrorLines
{
public:
    enum {
        LONGEST_LINE = 4000 ///< bytes, with its end: a pipe takes so many in one piece
    };

    /// @param descriptor  stays the caller's
    explicit ErrorLines(int descriptor) : m_descriptor(descriptor) {}

    /// Those of this program's standard error. Whoever runs beside others writes there through it.
    static ErrorLines& standard();

    /// @param line  without its end; what is beyond LONGEST_LINE is cut off
    void put(const QByteArray& line);

private:
    bool write(QByteArray line) const;

    const int m_descriptor;
    std::mutex m_mutex;
    qint64 m_leftOut = 0; ///< guarded by m_mutex
};

/// Tells a sentence on standard error. Any thread calls it, and never waits.
void tellOperator(const QString& sentence);

#endif
