#ifndef SPARKPLUG_PAYLOAD_H
#define SPARKPLUG_PAYLOAD_H

#include <QByteArray>
#include <QString>

#include <optional>
#include <variant>
#include <vector>

// What stands in a Sparkplug message, apart from its encoding. The fields and numbers are those of
// the public Sparkplug B definition; proto2 presence: a field that was set is written, also when it
// is 0 or false.

/// The datatypes of our metrics, with their public numbers.
enum class MetricType : quint32 {
    INT16 = 2,
    INT32 = 3,
    INT64 = 4,
    UINT16 = 6,
    UINT32 = 7,
    FLOAT = 9,
    BOOLEAN = 11,
    STRING = 12
};

/// The codes of the property Quality; nothing else is sent.
enum class QualityCode : qint32 { BAD = 0, GOOD = 192, STALE = 500 };

/// Monostate: null, which is written as is_null without a value field. Integers of all types are
/// qint64, within their type's range.
using MetricValue = std::variant<std::monostate, bool, qint64, float, QString>;

/// A metric to be sent.
struct Metric
{
    QString name; ///< empty: the alias stands for it
    std::optional<quint64> alias;
    qint64 time = 0;                          ///< ms since 1970
    std::optional<MetricType> type;           ///< in births; left out of data
    MetricType encodedAs = MetricType::INT64; ///< decides the value's field
    MetricValue value;                        ///< what encodedAs cannot hold goes as null, too
    std::optional<QualityCode> quality;
    bool isHistorical = false; ///< left out unless true
};

struct Payload
{
    qint64 time = 0;           ///< of sending, ms since 1970
    std::optional<quint8> seq; ///< empty in an NDEATH
    std::vector<Metric> metrics;
};

QByteArray encodedPayload(const Payload& payload);

/// A metric of a command as it came: names, aliases and value fields are the sender's.
struct CommandMetric
{
    QString name; ///< empty: none
    std::optional<quint64> alias;
    std::optional<quint32> type;
    bool isNull = false;

    enum Field { NONE, INT, LONG, FLOAT, DOUBLE, BOOLEAN, STRING, OTHER };
    Field field = NONE; ///< which value field was set; the last one where there are several. Data
                        ///< sets, templates and extensions are skipped, as if they were not there
    quint32 intValue = 0;
    quint64 longValue = 0;
    double number = 0; ///< of FLOAT and DOUBLE
    bool truth = false;
    QString text;
};

struct Command
{
    std::optional<qint64> time; ///< ms since 1970
    std::vector<CommandMetric> metrics;
};

/// Empty: the bytes are no payload, or more than 256 KiB, or hold more than 10,000 metrics. Takes
/// any bytes.
std::optional<Command> decodedCommand(const QByteArray& bytes);

/// The value of a command for a metric of this type, or why it does not fit, in words. Signed
/// numbers are read sign-extended to 32 bits and in the narrow form: 65535 is -1 for INT16. Where
/// the sender declares a type, it says what the bits mean: 65535 of a UInt16 does not fit INT16. A
/// field of another type, a value out of range, null and a value that is missing do not fit. A
/// float may be nan, inf or -inf.
struct UnfitCommand
{
    QString problem;
};
std::variant<MetricValue, UnfitCommand> commandValue(const CommandMetric& metric, MetricType type);

#endif
