// What a value of a command means for a tag of each type.

#include "sparkplug/payload.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using Declared = std::optional<quint32>;

CommandMetric intMetric(quint32 bits, Declared type = std::nullopt)
{
    CommandMetric metric;
    metric.type = type;
    metric.field = CommandMetric::INT;
    metric.intValue = bits;
    return metric;
}

CommandMetric longMetric(quint64 bits, Declared type = std::nullopt)
{
    CommandMetric metric;
    metric.type = type;
    metric.field = CommandMetric::LONG;
    metric.longValue = bits;
    return metric;
}

CommandMetric floatMetric(float number)
{
    CommandMetric metric;
    metric.field = CommandMetric::FLOAT;
    metric.number = static_cast<double>(number);
    return metric;
}

CommandMetric ofField(CommandMetric::Field field)
{
    CommandMetric metric;
    metric.field = field;
    return metric;
}

/// The integer that is written; empty: the value does not fit.
std::optional<qint64> written(const CommandMetric& metric, MetricType type)
{
    const std::variant<MetricValue, UnfitCommand> value = commandValue(metric, type);
    if (const auto* const fit = std::get_if<MetricValue>(&value)) return std::get<qint64>(*fit);
    EXPECT_FALSE(std::get<UnfitCommand>(value).problem.isEmpty());
    return std::nullopt;
}

float writtenFloat(float number)
{
    const auto value = commandValue(floatMetric(number), MetricType::FLOAT);
    return std::get<float>(std::get<MetricValue>(value));
}

QString problem(const CommandMetric& metric, MetricType type)
{
    const std::variant<MetricValue, UnfitCommand> value = commandValue(metric, type);
    const auto* const unfit = std::get_if<UnfitCommand>(&value);
    return unfit ? unfit->problem : QString();
}

const std::optional<qint64> UNFIT;

} // namespace

TEST(SparkplugCommandValue, OfInt16IsTakenSignExtendedAndNarrow)
{
    EXPECT_EQ(0, written(intMetric(0), MetricType::INT16));
    EXPECT_EQ(32767, written(intMetric(32767), MetricType::INT16));
    EXPECT_EQ(-32768, written(intMetric(32768), MetricType::INT16));
    EXPECT_EQ(-1, written(intMetric(65535), MetricType::INT16));
    EXPECT_EQ(-1, written(intMetric(4294967295), MetricType::INT16));
    EXPECT_EQ(-32768, written(intMetric(4294934528), MetricType::INT16));
    EXPECT_EQ(UNFIT, written(intMetric(65536), MetricType::INT16));
    EXPECT_EQ(UNFIT, written(intMetric(4294934527), MetricType::INT16));
    EXPECT_EQ(UNFIT, written(intMetric(2147483648), MetricType::INT16));
}

TEST(SparkplugCommandValue, OfTheOtherIntegersFillsTheirRange)
{
    EXPECT_EQ(65535, written(intMetric(65535), MetricType::UINT16));
    EXPECT_EQ(UNFIT, written(intMetric(65536), MetricType::UINT16));
    EXPECT_EQ(UNFIT, written(intMetric(4294967295), MetricType::UINT16));
    EXPECT_EQ(2147483647, written(intMetric(2147483647), MetricType::INT32));
    EXPECT_EQ(-2147483648LL, written(intMetric(2147483648), MetricType::INT32));
    EXPECT_EQ(-1, written(intMetric(4294967295), MetricType::INT32));
    EXPECT_EQ(65535, written(intMetric(65535), MetricType::INT32));
    EXPECT_EQ(4294967295LL, written(intMetric(4294967295), MetricType::UINT32));
    EXPECT_EQ(-1, written(longMetric(18446744073709551615ULL), MetricType::INT64));
    EXPECT_EQ(std::numeric_limits<qint64>::min(),
              written(longMetric(9223372036854775808ULL), MetricType::INT64));
}

// Datatypes: 1 Int8, 2 Int16, 3 Int32, 4 Int64, 5 UInt8, 6 UInt16, 7 UInt32, 8 UInt64.
TEST(SparkplugCommandValue, MeansWhatItsSenderDeclared)
{
    EXPECT_EQ(-1, written(intMetric(65535, 2), MetricType::INT16));
    EXPECT_EQ(-1, written(intMetric(255, 1), MetricType::INT16));
    EXPECT_EQ(-1, written(intMetric(65535, 2), MetricType::INT32));
    EXPECT_EQ(255, written(intMetric(255, 5), MetricType::INT16));
    EXPECT_EQ(7, written(intMetric(7, 7), MetricType::INT16));
    EXPECT_EQ(5, written(longMetric(5, 8), MetricType::INT64));
    EXPECT_EQ(UNFIT, written(intMetric(65535, 6), MetricType::INT16)) << "65535 is meant, not -1";
    EXPECT_EQ(UNFIT, written(intMetric(65535, 3), MetricType::INT16));
    EXPECT_EQ(UNFIT, written(intMetric(4294967295, 7), MetricType::INT32));
    EXPECT_EQ(UNFIT, written(intMetric(65535, 2), MetricType::UINT16)) << "-1 is meant";
    EXPECT_EQ(UNFIT, written(intMetric(256, 5), MetricType::INT16)) << "no UInt8";
    EXPECT_EQ(UNFIT, written(longMetric(18446744073709551615ULL, 8), MetricType::INT64));
}

TEST(SparkplugCommandValue, DoesNotFitWithADatatypeOfAnotherField)
{
    for (const quint32 type : {0U, 4U, 8U, 9U, 10U, 11U, 12U, 13U, 16U, 19U, 22U, 4294967295U})
        EXPECT_EQ(UNFIT, written(intMetric(1, type), MetricType::INT16)) << type;
    for (const quint32 type : {0U, 3U, 7U, 9U, 13U})
        EXPECT_EQ(UNFIT, written(longMetric(1, type), MetricType::INT64)) << type;
    for (const MetricType type : {MetricType::FLOAT, MetricType::BOOLEAN, MetricType::STRING}) {
        CommandMetric metric = ofField(type == MetricType::FLOAT     ? CommandMetric::FLOAT
                                       : type == MetricType::BOOLEAN ? CommandMetric::BOOLEAN
                                                                     : CommandMetric::STRING);
        EXPECT_EQ(QString(), problem(metric, type));
        metric.type = 3;
        EXPECT_NE(QString(), problem(metric, type));
        metric.type = static_cast<quint32>(type);
        EXPECT_EQ(QString(), problem(metric, type));
    }
}

TEST(SparkplugCommandValue, OfFloatIsAnyFloat)
{
    EXPECT_EQ(21.5F, writtenFloat(21.5F));
    EXPECT_EQ(std::numeric_limits<float>::denorm_min(),
              writtenFloat(std::numeric_limits<float>::denorm_min()));
    EXPECT_EQ(-std::numeric_limits<float>::infinity(),
              writtenFloat(-std::numeric_limits<float>::infinity()));
    EXPECT_TRUE(std::isnan(writtenFloat(std::nanf(""))));
    EXPECT_TRUE(std::signbit(writtenFloat(-0.0F)));
}

TEST(SparkplugCommandValue, OfBooleanAndStringIsAsItCame)
{
    CommandMetric truth = ofField(CommandMetric::BOOLEAN);
    truth.truth = true;
    EXPECT_EQ(MetricValue(true), std::get<MetricValue>(commandValue(truth, MetricType::BOOLEAN)));
    CommandMetric text = ofField(CommandMetric::STRING);
    text.text = QLatin1String("on");
    EXPECT_EQ(MetricValue(text.text),
              std::get<MetricValue>(commandValue(text, MetricType::STRING)));
}

TEST(SparkplugCommandValue, DoesNotFitInAnotherField)
{
    struct Case
    {
        MetricType type;
        CommandMetric::Field field;
    };
    for (const Case& of : {Case{MetricType::INT16, CommandMetric::INT},
                           {MetricType::INT32, CommandMetric::INT},
                           {MetricType::INT64, CommandMetric::LONG},
                           {MetricType::UINT16, CommandMetric::INT},
                           {MetricType::UINT32, CommandMetric::INT},
                           {MetricType::FLOAT, CommandMetric::FLOAT},
                           {MetricType::BOOLEAN, CommandMetric::BOOLEAN},
                           {MetricType::STRING, CommandMetric::STRING}}) {
        for (int field = CommandMetric::NONE; field <= CommandMetric::OTHER; ++field) {
            const QString found =
                problem(ofField(static_cast<CommandMetric::Field>(field)), of.type);
            EXPECT_EQ(field == of.field, found.isEmpty()) << int(of.type) << ' ' << field;
        }
    }
}

TEST(SparkplugCommandValue, OfNullFitsNothing)
{
    CommandMetric metric = intMetric(5);
    metric.isNull = true;
    EXPECT_EQ(UNFIT, written(metric, MetricType::INT16));
    EXPECT_NE(QString(), problem(metric, MetricType::STRING));
}

TEST(SparkplugCommandValue, IsRefusedInWords)
{
    EXPECT_EQ(QLatin1String("70000 is not in -32768 to 32767"),
              problem(intMetric(70000), MetricType::INT16));
    EXPECT_EQ(QLatin1String("65535 is not in -32768 to 32767"),
              problem(intMetric(65535, 6), MetricType::INT16));
    EXPECT_EQ(QLatin1String("the value is missing"),
              problem(ofField(CommandMetric::NONE), MetricType::FLOAT));
    EXPECT_EQ(QLatin1String("the value is in double_value, not in float_value"),
              problem(ofField(CommandMetric::DOUBLE), MetricType::FLOAT));
    EXPECT_EQ(QLatin1String("the value is in another field, not in int_value"),
              problem(ofField(CommandMetric::OTHER), MetricType::INT32));
    EXPECT_EQ(QLatin1String("int_value does not belong to datatype 9"),
              problem(intMetric(1, 9), MetricType::INT32));
    CommandMetric null = ofField(CommandMetric::NONE);
    null.isNull = true;
    EXPECT_EQ(QLatin1String("null is no value that can be written"),
              problem(null, MetricType::BOOLEAN));
}
