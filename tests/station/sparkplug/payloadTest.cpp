// Payloads byte by byte. The bytes were made by
//     protoc --proto_path=tests/support --encode=reader.Payload sparkplugReader.proto
// from the text above each of them, and shown by xxd -p.

#include "sparkplug/payload.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

const qint64 NOW = 1700000000123;

QByteArray hex(const char* text)
{
    return QByteArray::fromHex(text);
}

Metric metricNamed(const char* name, MetricType type, const MetricValue& value)
{
    Metric metric;
    metric.name = QString::fromUtf8(name);
    metric.time = NOW;
    metric.type = type;
    metric.encodedAs = type;
    metric.value = value;
    return metric;
}

/// A metric of time 0 without a name, as hexadecimal text behind its time.
QByteArray valueBytes(MetricType encodedAs, const MetricValue& value)
{
    Payload payload;
    payload.metrics.resize(1);
    payload.metrics[0].encodedAs = encodedAs;
    payload.metrics[0].value = value;
    const QByteArray bytes = encodedPayload(payload);
    EXPECT_EQ("0800", bytes.left(2).toHex());
    EXPECT_EQ(0x12, bytes.at(2));
    EXPECT_EQ("1800", bytes.mid(4, 2).toHex());
    return bytes.mid(6).toHex();
}

} // namespace

// timestamp: 1700000000123 seq: 0
// metrics { name: "bdSeq" timestamp: 1700000000123 datatype: 4 long_value: 17 }
// metrics { name: "Node Control/Rebirth" timestamp: 1700000000123 datatype: 11
//           boolean_value: false }
// metrics { name: "Buffer/Dropped" alias: 1 timestamp: 1700000000123 datatype: 4
//           properties { keys: "Quality" values { type: 3 int_value: 192 } } long_value: 0 }
TEST(SparkplugPayload, WritesABirthWithItsZeros)
{
    Payload birth;
    birth.time = NOW;
    birth.seq = quint8(0);
    birth.metrics.push_back(metricNamed("bdSeq", MetricType::INT64, qint64(17)));
    birth.metrics.push_back(metricNamed("Node Control/Rebirth", MetricType::BOOLEAN, false));
    birth.metrics.push_back(metricNamed("Buffer/Dropped", MetricType::INT64, qint64(0)));
    birth.metrics[2].alias = 1;
    birth.metrics[2].quality = QualityCode::GOOD;
    EXPECT_EQ(hex("08fbd095ffbc3112120a05626453657118fbd095ffbc312004581112210a144e6f646520436f6e74"
                  "726f6c2f5265626972746818fbd095ffbc31200b7000122f0a0e4275666665722f44726f70706564"
                  "100118fbd095ffbc3120044a100a075175616c6974791205080318c00158001800")
                  .toHex(),
              encodedPayload(birth).toHex());
}

// timestamp: 1700000000200 seq: 255
// metrics { alias: 12 timestamp: 1700000000150
//           properties { keys: "Quality" values { type: 3 int_value: 500 } }
//           int_value: 4294967295 }
// metrics { alias: 300 timestamp: 1700000000151 is_historical: true
//           properties { keys: "Quality" values { type: 3 int_value: 0 } } float_value: -0.5 }
// metrics { alias: 13 timestamp: 1700000000152 is_null: true }
TEST(SparkplugPayload, WritesDataWithoutNamesAndTypes)
{
    Payload data;
    data.time = 1700000000200;
    data.seq = quint8(255);
    data.metrics.resize(3);
    data.metrics[0].alias = 12;
    data.metrics[0].time = 1700000000150;
    data.metrics[0].encodedAs = MetricType::INT16;
    data.metrics[0].value = qint64(-1);
    data.metrics[0].quality = QualityCode::STALE;
    data.metrics[1].alias = 300;
    data.metrics[1].time = 1700000000151;
    data.metrics[1].encodedAs = MetricType::FLOAT;
    data.metrics[1].value = -0.5F;
    data.metrics[1].quality = QualityCode::BAD;
    data.metrics[1].isHistorical = true;
    data.metrics[2].alias = 13;
    data.metrics[2].time = 1700000000152;
    EXPECT_EQ(hex("08c8d195ffbc311221100c1896d195ffbc314a100a075175616c6974791205080318f40350ffffff"
                  "ff0f122210ac021897d195ffbc3128014a0f0a075175616c69747912040803180065000000bf120b"
                  "100d1898d195ffbc31380118ff01")
                  .toHex(),
              encodedPayload(data).toHex());
}

// timestamp: 1700000000123
// metrics { name: "bdSeq" timestamp: 1700000000123 datatype: 4 long_value: 255 }
TEST(SparkplugPayload, WritesADeathWithoutSeq)
{
    Payload death;
    death.time = NOW;
    death.metrics.push_back(metricNamed("bdSeq", MetricType::INT64, qint64(255)));
    EXPECT_EQ("08fbd095ffbc3112130a05626453657118fbd095ffbc31200458ff01",
              encodedPayload(death).toHex());
}

TEST(SparkplugPayload, WritesSignedNumbersInFiveBytesOrTen)
{
    EXPECT_EQ("50ffffffff0f", valueBytes(MetricType::INT16, qint64(-1)));
    EXPECT_EQ("508080feff0f", valueBytes(MetricType::INT16, qint64(-32768)));
    EXPECT_EQ("50ffff01", valueBytes(MetricType::INT16, qint64(32767)));
    EXPECT_EQ("508080808008", valueBytes(MetricType::INT32, qint64(-2147483647 - 1)));
    EXPECT_EQ("50ffff03", valueBytes(MetricType::UINT16, qint64(65535)));
    EXPECT_EQ("50ffffffff0f", valueBytes(MetricType::UINT32, qint64(4294967295)));
    EXPECT_EQ("58ffffffffffffffffff01", valueBytes(MetricType::INT64, qint64(-1)));
    EXPECT_EQ("58ffffffffffffffff7f",
              valueBytes(MetricType::INT64, std::numeric_limits<qint64>::max()));
}

TEST(SparkplugPayload, WritesEachFloatThereIs)
{
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ("650000807f", valueBytes(MetricType::FLOAT, infinity));
    EXPECT_EQ("65000080ff", valueBytes(MetricType::FLOAT, -infinity));
    EXPECT_EQ("650000c07f", valueBytes(MetricType::FLOAT, std::nanf("")));
    EXPECT_EQ("6500000080", valueBytes(MetricType::FLOAT, -0.0F));
    EXPECT_EQ("6501000000",
              valueBytes(MetricType::FLOAT, std::numeric_limits<float>::denorm_min()));
}

TEST(SparkplugPayload, WritesTextsInUtf8)
{
    EXPECT_EQ("7a00", valueBytes(MetricType::STRING, QString()));
    EXPECT_EQ("7a05c3a4e282ac", valueBytes(MetricType::STRING, QString::fromUtf8("ä€")));
}

TEST(SparkplugPayload, WritesNullWithoutAValueField)
{
    for (const MetricType type :
         {MetricType::INT16, MetricType::INT32, MetricType::INT64, MetricType::UINT16,
          MetricType::UINT32, MetricType::FLOAT, MetricType::BOOLEAN, MetricType::STRING})
        EXPECT_EQ("3801", valueBytes(type, MetricValue())) << int(type);
}

TEST(SparkplugPayload, WritesNullForAValueThatItsFieldCannotHold)
{
    EXPECT_EQ("3801", valueBytes(MetricType::INT16, 1.5F));
    EXPECT_EQ("3801", valueBytes(MetricType::INT64, true));
    EXPECT_EQ("3801", valueBytes(MetricType::FLOAT, qint64(1)));
    EXPECT_EQ("3801", valueBytes(MetricType::BOOLEAN, qint64(1)));
    EXPECT_EQ("3801", valueBytes(MetricType::STRING, false));
}
