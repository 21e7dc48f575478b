#ifndef OPEN_METRICS_TEXT_H
#define OPEN_METRICS_TEXT_H

#include <QByteArray>
#include <QString>

#include <utility>
#include <vector>

/// Writes metrics in the text form of OpenMetrics 1.0. All names begin with kakb_. The samples of a
/// family follow each other.
class OpenMetricsText
{
public:
    enum Type { COUNTER, GAUGE, HISTOGRAM, INFO };

    /// Names without characters that are escaped, and their values.
    using Labels = std::vector<std::pair<const char*, QString>>;

    static const char CONTENT_TYPE[];

    /// Begins a family.
    /// @param name  without prefix; ends in the unit, when there is one: "reply_time_seconds"
    /// @param unit  empty: it has none
    void beginFamily(const char* name, Type type, const char* help, const char* unit = "");

    /// Adds a sample of the family. Counters and infos get their suffix here.
    void add(const Labels& labels, double value);

    /// Adds a sample with a suffix, such as "_bucket".
    void addPart(const char* suffix, const Labels& labels, double value);

    /// All that was added, and the mark of the end.
    QByteArray document() const;

private:
    QByteArray m_text;
    QByteArray m_name; ///< of the family that was begun last
    Type m_type = GAUGE;
};

#endif
