#ifndef CSV_OUTPUT_H
#define CSV_OUTPUT_H

#include "verbs/watchOutput.h"

#include <optional>

/// The output of a watch as CSV (RFC 4180) on standard output: a line of names, then one line for
/// each interval with the time and a field for each tag. A field is empty while its tag is not
/// good. The figures and the events of the link go to standard error.
///
///   time,level,pump
///   1.000213,21.5,0
///   2.000198,21.7,1
///
/// The first line of values comes as soon as every tag was read, and after one interval at the
/// latest. The other lines follow at the interval; a line that is late is not made up for.
class CsvOutput : public WatchOutput
{
public:
    /// @param tags      must outlive the output
    /// @param interval  microseconds from a line to the next, 1 or more
    CsvOutput(const std::vector<Tag>& tags, qint64 interval);

    News wait(HostProgram& host, int ms) override;
    void show(const News& news, HostProgram& host) override;
    void end(const LinkFigures& figures) override;

private:
    bool isDue(const std::vector<TagState>& states, qint64 now) const;
    void print(const std::vector<TagState>& states, const QString& time) const;

    const std::vector<Tag>& m_tags;
    const qint64 m_interval;
    std::optional<qint64> m_start; ///< of the watch
    std::optional<qint64> m_next;  ///< time of the next line; empty: no line was printed yet
};

#endif
