#ifndef RECEIVED_PAYLOAD_H
#define RECEIVED_PAYLOAD_H

#include "wireReader.h"

#include <QString>

#include <cstring>
#include <optional>

// A payload as a host reads it: the public numbers of fields, and nothing of the station's own
// encoder.

struct ReceivedMetric
{
    std::optional<QString> name;
    std::optional<quint64> alias;
    std::optional<qint64> time;
    std::optional<quint64> type;
    bool isHistorical = false, isNull = false;
    int valueField = 0, valueFields = 0; ///< the last one's number, and how many there are
    quint64 bits = 0;                    ///< of a number
    QString text;
    size_t keys = 0, properties = 0;
    std::optional<qint32> quality;
    std::optional<quint64> qualityType;

    /// Of a field of type `asType`, the datatype that the birth told.
    double number(quint64 asType) const
    {
        switch (asType) {
        case 2:
            return double(qint16(quint16(bits)));
        case 3:
            return double(qint32(quint32(bits)));
        case 4:
            return double(qint64(bits));
        case 9: {
            const quint32 raw = quint32(bits);
            float value = 0;
            std::memcpy(&value, &raw, sizeof value);
            return double(value);
        }
        default:
            return double(bits);
        }
    }
};

struct ReceivedPayload
{
    bool isReadable = false;
    std::optional<qint64> time;
    std::optional<quint64> seq;
    std::vector<ReceivedMetric> metrics;
    bool isOther = false; ///< a field that is none of the three

    const ReceivedMetric* named(const char* name) const
    {
        for (const ReceivedMetric& metric : metrics) {
            if (metric.name && *metric.name == QLatin1String(name)) return &metric;
        }
        return nullptr;
    }
};

inline void readProperties(const QByteArray& bytes, ReceivedMetric& metric)
{
    std::vector<QByteArray> keys;
    std::vector<QByteArray> values;
    for (const WireField& field : WireReader::fields(bytes))
        (field.number == 1 ? keys : values).push_back(field.bytes);
    metric.keys = keys.size();
    metric.properties = values.size();
    for (size_t i = 0; i < keys.size() && i < values.size(); ++i) {
        if (keys[i] != "Quality") continue;
        for (const WireField& field : WireReader::fields(values[i])) {
            if (field.number == 1) metric.qualityType = field.value;
            if (field.number == 3) metric.quality = qint32(quint32(field.value));
        }
    }
}

inline ReceivedMetric receivedMetric(const QByteArray& bytes)
{
    ReceivedMetric metric;
    for (const WireField& field : WireReader::fields(bytes)) {
        switch (field.number) {
        case 1:
            metric.name = QString::fromUtf8(field.bytes);
            break;
        case 2:
            metric.alias = field.value;
            break;
        case 3:
            metric.time = qint64(field.value);
            break;
        case 4:
            metric.type = field.value;
            break;
        case 5:
            metric.isHistorical = field.value != 0;
            break;
        case 7:
            metric.isNull = field.value != 0;
            break;
        case 9:
            readProperties(field.bytes, metric);
            break;
        default:
            if (field.number < 10) break;
            metric.valueField = int(field.number);
            ++metric.valueFields;
            metric.bits = field.value;
            metric.text = QString::fromUtf8(field.bytes);
        }
    }
    return metric;
}

inline ReceivedPayload receivedPayload(const QByteArray& bytes)
{
    ReceivedPayload payload;
    try {
        for (const WireField& field : WireReader::fields(bytes)) {
            switch (field.number) {
            case 1:
                payload.time = qint64(field.value);
                break;
            case 2:
                payload.metrics.push_back(receivedMetric(field.bytes));
                break;
            case 3:
                payload.seq = field.value;
                break;
            default:
                payload.isOther = true;
            }
        }
        payload.isReadable = !bytes.isEmpty() && !payload.isOther;
    } catch (const std::runtime_error&) {
        payload.isReadable = false;
    }
    return payload;
}

#endif
