// The rules of Sparkplug that the encoding of a payload decides, each under its public name. They
// are looked at on the wire, by a reader that knows the numbers of fields and nothing of ours.

#include "sparkplug/payload.h"

#include "wireReader.h"

#include <gtest/gtest.h>

#include <set>

namespace {

// The public numbers of fields.
enum { METRICS = 2 };
enum { DATATYPE = 4, PROPERTIES = 9, DATASET_VALUE = 17, TEMPLATE_VALUE = 18 };
enum { KEYS = 1, VALUES = 2 };
enum { PROPERTY_TYPE = 1, PROPERTY_IS_NULL = 2, PROPERTY_INT_VALUE = 3 };

/// The public numbers of the datatypes, and a value of each.
struct TypeCase
{
    MetricType type;
    quint64 number;
    MetricValue value;
};

const std::vector<TypeCase>& types()
{
    static const std::vector<TypeCase> all = {
        {MetricType::INT16, 2, qint64(-1)},     {MetricType::INT32, 3, qint64(-1)},
        {MetricType::INT64, 4, qint64(-1)},     {MetricType::UINT16, 6, qint64(65535)},
        {MetricType::UINT32, 7, qint64(70000)}, {MetricType::FLOAT, 9, 1.5F},
        {MetricType::BOOLEAN, 11, true},        {MetricType::STRING, 12, QLatin1String("ä")}};
    return all;
}

const std::vector<QualityCode>& qualities()
{
    static const std::vector<QualityCode> all = {QualityCode::BAD, QualityCode::GOOD,
                                                 QualityCode::STALE};
    return all;
}

/// A metric of each type, with and without a value, of each quality and of none.
std::vector<Metric> everyMetric()
{
    std::vector<Metric> metrics;
    for (const TypeCase& of : types()) {
        for (const bool isNull : {false, true}) {
            Metric metric;
            metric.name = QLatin1String("tag");
            metric.type = of.type;
            metric.encodedAs = of.type;
            if (!isNull) metric.value = of.value;
            metrics.push_back(metric);
            for (const QualityCode quality : qualities()) {
                metric.quality = quality;
                metrics.push_back(metric);
            }
        }
    }
    return metrics;
}

/// As they are on the wire, in the order of everyMetric().
std::vector<QByteArray> encodedMetrics()
{
    Payload payload;
    payload.metrics = everyMetric();
    std::vector<QByteArray> metrics;
    for (const WireField& field : fieldsOf(encodedPayload(payload), METRICS)) {
        EXPECT_EQ(WireField::BYTES, field.kind);
        metrics.push_back(field.bytes);
    }
    EXPECT_EQ(payload.metrics.size(), metrics.size());
    return metrics;
}

std::vector<QByteArray> encodedPropertySets()
{
    std::vector<QByteArray> sets;
    for (const QByteArray& metric : encodedMetrics()) {
        for (const WireField& field : fieldsOf(metric, PROPERTIES))
            sets.push_back(field.bytes);
    }
    EXPECT_EQ(everyMetric().size() * 3 / 4, sets.size()) << "each fourth one has no quality";
    return sets;
}

std::vector<QByteArray> encodedPropertyValues()
{
    std::vector<QByteArray> values;
    for (const QByteArray& set : encodedPropertySets()) {
        for (const WireField& field : fieldsOf(set, VALUES))
            values.push_back(field.bytes);
    }
    EXPECT_FALSE(values.empty());
    return values;
}

void expectUint32(const WireField& field)
{
    EXPECT_EQ(WireField::VARINT, field.kind);
    EXPECT_LE(field.value, quint64(0xFFFFFFFF));
}

void expectOnlyPlainValues()
{
    for (const QByteArray& metric : encodedMetrics()) {
        EXPECT_TRUE(fieldsOf(metric, DATASET_VALUE).empty());
        EXPECT_TRUE(fieldsOf(metric, TEMPLATE_VALUE).empty());
        for (const WireField& type : fieldsOf(metric, DATATYPE)) {
            EXPECT_NE(16U, type.value) << "a data set";
            EXPECT_NE(19U, type.value) << "a template";
        }
    }
}

} // namespace

TEST(Sparkplug, payloads_metric_datatype_value_type)
{
    for (const QByteArray& metric : encodedMetrics()) {
        const std::vector<WireField> found = fieldsOf(metric, DATATYPE);
        ASSERT_EQ(1U, found.size());
        expectUint32(found[0]);
    }
}

TEST(Sparkplug, payloads_metric_datatype_value)
{
    for (const TypeCase& of : types()) {
        Payload payload;
        payload.metrics.resize(1);
        payload.metrics[0].type = of.type;
        const QByteArray metric = fieldsOf(encodedPayload(payload), METRICS).at(0).bytes;
        EXPECT_EQ(of.number, fieldsOf(metric, DATATYPE).at(0).value);
    }
}

TEST(Sparkplug, payloads_propertyset_keys_array_size)
{
    for (const QByteArray& set : encodedPropertySets()) {
        const std::vector<WireField> keys = fieldsOf(set, KEYS);
        EXPECT_EQ(fieldsOf(set, VALUES).size(), keys.size());
        ASSERT_EQ(1U, keys.size());
        EXPECT_EQ("Quality", keys[0].bytes);
    }
}

TEST(Sparkplug, payloads_propertyset_values_array_size)
{
    for (const QByteArray& set : encodedPropertySets()) {
        const std::vector<WireField> values = fieldsOf(set, VALUES);
        EXPECT_EQ(fieldsOf(set, KEYS).size(), values.size());
        ASSERT_EQ(1U, values.size());
        EXPECT_EQ(WireField::BYTES, values[0].kind);
    }
}

TEST(Sparkplug, payloads_metric_propertyvalue_type_type)
{
    for (const QByteArray& value : encodedPropertyValues()) {
        for (const WireField& type : fieldsOf(value, PROPERTY_TYPE))
            expectUint32(type);
    }
}

TEST(Sparkplug, payloads_metric_propertyvalue_type_value)
{
    for (const QByteArray& value : encodedPropertyValues()) {
        for (const WireField& type : fieldsOf(value, PROPERTY_TYPE)) {
            const bool isPlain = type.value >= 1 && type.value <= 14;
            EXPECT_TRUE(isPlain || type.value == 20 || type.value == 21) << type.value;
        }
    }
}

TEST(Sparkplug, payloads_metric_propertyvalue_type_req)
{
    for (const QByteArray& value : encodedPropertyValues())
        EXPECT_EQ(1U, fieldsOf(value, PROPERTY_TYPE).size());
}

TEST(Sparkplug, payloads_propertyset_quality_value_type)
{
    for (const QByteArray& value : encodedPropertyValues())
        EXPECT_EQ(3U, fieldsOf(value, PROPERTY_TYPE).at(0).value);
}

TEST(Sparkplug, payloads_propertyset_quality_value_value)
{
    std::set<quint64> codes;
    for (const QByteArray& value : encodedPropertyValues()) {
        EXPECT_EQ(2U, WireReader::fields(value).size()) << "a type and a value";
        EXPECT_TRUE(fieldsOf(value, PROPERTY_IS_NULL).empty());
        const std::vector<WireField> codeFields = fieldsOf(value, PROPERTY_INT_VALUE);
        ASSERT_EQ(1U, codeFields.size());
        EXPECT_EQ(WireField::VARINT, codeFields[0].kind);
        codes.insert(codeFields[0].value);
    }
    EXPECT_EQ((std::set<quint64>{0, 192, 500}), codes);
}

// A tag is one value, so nothing that is encoded is a template or a data set. The rules about
// templates hold because there are none.
#define KEPT_WITHOUT_TEMPLATES(rule)                                                               \
    TEST(Sparkplug, rule)                                                                          \
    {                                                                                              \
        expectOnlyPlainValues();                                                                   \
    }

KEPT_WITHOUT_TEMPLATES(payloads_template_definition_members)
KEPT_WITHOUT_TEMPLATES(payloads_template_definition_nbirth)
KEPT_WITHOUT_TEMPLATES(payloads_template_definition_nbirth_only)
KEPT_WITHOUT_TEMPLATES(payloads_template_definition_parameters)
KEPT_WITHOUT_TEMPLATES(payloads_template_definition_parameters_default)
KEPT_WITHOUT_TEMPLATES(payloads_template_definition_ref)
KEPT_WITHOUT_TEMPLATES(payloads_template_instance_members)
KEPT_WITHOUT_TEMPLATES(payloads_template_instance_members_birth)
KEPT_WITHOUT_TEMPLATES(payloads_template_instance_members_data)
KEPT_WITHOUT_TEMPLATES(payloads_template_instance_parameters)
KEPT_WITHOUT_TEMPLATES(payloads_template_instance_ref)
KEPT_WITHOUT_TEMPLATES(payloads_template_dataset_value)
