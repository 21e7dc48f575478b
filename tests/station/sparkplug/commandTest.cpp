// Commands as hosts send them, good and bad. Longer bytes were made by
//     protoc --proto_path=tests/support --encode=reader.Payload sparkplugReader.proto
// from the text above each of them, and shown by xxd -p.

#include "sparkplug/payload.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

/// The field `number` of a message, a varint of one byte or bytes of up to 127.
QByteArray field(int number, const QByteArray& bytes)
{
    QByteArray text;
    text.append(char(number << 3 | 2)).append(char(bytes.size())).append(bytes);
    return text;
}

/// The one metric of a command that holds these fields, as hexadecimal text.
CommandMetric metricOf(const char* fields)
{
    const std::optional<Command> command = decodedCommand(field(2, QByteArray::fromHex(fields)));
    EXPECT_TRUE(command && command->metrics.size() == 1);
    return command && !command->metrics.empty() ? command->metrics[0] : CommandMetric();
}

} // namespace

// timestamp: 1700000000300
// metrics { name: "setpoint" timestamp: 1700000000299 datatype: 9 float_value: 21.5 }
// metrics { alias: 300 int_value: 65535 metadata { content_type: "x" size: 3 } }
// metrics { alias: 0 is_null: true }
TEST(SparkplugCommand, IsReadByNameAndByAlias)
{
    const std::optional<Command> command = decodedCommand(
        QByteArray::fromHex("08acd295ffbc3112180a08736574706f696e7418abd295ffbc312009650000ac41120e"
                            "10ac024205120178180350ffff03120410003801"));
    ASSERT_TRUE(command);
    EXPECT_EQ(1700000000300, command->time);
    ASSERT_EQ(3U, command->metrics.size());

    const CommandMetric& named = command->metrics[0];
    EXPECT_EQ(QLatin1String("setpoint"), named.name);
    EXPECT_FALSE(named.alias);
    EXPECT_EQ(9U, named.type);
    EXPECT_EQ(CommandMetric::FLOAT, named.field);
    EXPECT_EQ(21.5, named.number);
    EXPECT_FALSE(named.isNull);

    const CommandMetric& aliased = command->metrics[1];
    EXPECT_TRUE(aliased.name.isEmpty());
    EXPECT_EQ(300U, aliased.alias);
    EXPECT_FALSE(aliased.type);
    EXPECT_EQ(CommandMetric::INT, aliased.field);
    EXPECT_EQ(65535U, aliased.intValue);

    const CommandMetric& null = command->metrics[2];
    EXPECT_EQ(0U, null.alias) << "alias 0 is an alias";
    EXPECT_TRUE(null.isNull);
    EXPECT_EQ(CommandMetric::NONE, null.field);
}

// seq: 4 uuid: "u" body: "b"
// metrics { name: "recipe" template_value { version: "1" is_definition: false
//           metrics { name: "inner" int_value: 5 }
//           parameters { name: "p" type: 3 int_value: 1 } } }
// metrics { name: "table" dataset_value { num_of_columns: 1 columns: "c" types: 3
//           rows { elements { int_value: 7 } } } }
// metrics { name: "pump" boolean_value: true properties { keys: "p"
//           values { type: 20 propertyset_value { keys: "q" values { type: 3 int_value: 1 } } } } }
// metrics { name: "raw" bytes_value: "ab" }
// metrics { name: "next" double_value: 2 }
TEST(SparkplugCommand, IsReadAroundWhatTheStationDoesNotKnow)
{
    const std::optional<Command> command = decodedCommand(QByteArray::fromHex(
        "12240a067265636970659201190a013112090a05696e6e657250051a070a017010031801280012170a057461"
        "626c658a010d0801120163180322040a020807121c0a0470756d704a120a0170120d08144a090a0171120408"
        "0318017001120a0a037261778201026162120f0a046e65787469000000000000004018042201752a0162"));
    ASSERT_TRUE(command);
    EXPECT_FALSE(command->time);
    ASSERT_EQ(5U, command->metrics.size());
    EXPECT_EQ(QLatin1String("recipe"), command->metrics[0].name);
    EXPECT_EQ(CommandMetric::NONE, command->metrics[0].field);
    EXPECT_EQ(QLatin1String("table"), command->metrics[1].name);
    EXPECT_EQ(CommandMetric::NONE, command->metrics[1].field);
    EXPECT_EQ(CommandMetric::BOOLEAN, command->metrics[2].field);
    EXPECT_TRUE(command->metrics[2].truth);
    EXPECT_EQ(CommandMetric::OTHER, command->metrics[3].field);
    EXPECT_EQ(QLatin1String("next"), command->metrics[4].name);
    EXPECT_EQ(CommandMetric::DOUBLE, command->metrics[4].field);
    EXPECT_EQ(2.0, command->metrics[4].number);
}

TEST(SparkplugCommand, TakesTheLastOfSeveralValues)
{
    const CommandMetric metric = metricOf("5005"
                                          "5806"
                                          "7a026f6b");
    EXPECT_EQ(CommandMetric::STRING, metric.field);
    EXPECT_EQ(QLatin1String("ok"), metric.text);
    EXPECT_EQ(CommandMetric::LONG, metricOf("7001"
                                            "58ffffffffffffffffff01")
                                       .field);
}

TEST(SparkplugCommand, TakesAFieldOfAnotherKindForOneItDoesNotKnow)
{
    EXPECT_EQ(CommandMetric::NONE, metricOf("55 01000000").field) << "int_value in four bytes";
}

TEST(SparkplugCommand, KeepsANameThatIsNoUtf8InOnePiece)
{
    EXPECT_EQ(QString(QChar(0xFFFD)) + QLatin1Char('a'), metricOf("0a02ff61").name);
}

TEST(SparkplugCommand, HasNoTimeBefore1970)
{
    EXPECT_EQ(std::numeric_limits<qint64>::max(),
              decodedCommand(QByteArray::fromHex("08ffffffffffffffffff01"))->time);
    EXPECT_EQ(0, decodedCommand(QByteArray::fromHex("0800"))->time);
}

TEST(SparkplugCommand, OfNoBytesHasNoMetrics)
{
    const std::optional<Command> command = decodedCommand(QByteArray());
    ASSERT_TRUE(command);
    EXPECT_TRUE(command->metrics.empty());
}

TEST(SparkplugCommand, IsNoneWhenItsBytesAreBroken)
{
    for (const char* const bytes : {"12",                       // a metric without a length
                                    "1205 0a01",                // that ends too early
                                    "1203 0a0561",              // whose name is longer than it is
                                    "08",                       // a time without a number
                                    "08ffffffffffffffffffff01", // a varint of eleven bytes
                                    "12ffffffff0f",             // a length of 4 GiB
                                    "0f",                       // a kind of field that there is not
                                    "00",                       // field 0
                                    "0c",  // the end of a group that did not begin
                                    "7b"}) // a group without an end
        EXPECT_FALSE(decodedCommand(QByteArray::fromHex(bytes))) << bytes;
}

TEST(SparkplugCommand, IsNoneWhenItIsNestedTooDeeply)
{
    const QByteArray begin = QByteArray::fromHex("7b"), end = QByteArray::fromHex("7c");
    EXPECT_TRUE(decodedCommand(begin.repeated(50) + end.repeated(50)));
    EXPECT_FALSE(decodedCommand(begin.repeated(100000) + end.repeated(100000)));
}

TEST(SparkplugCommand, IsNoneWhenItIsTooLarge)
{
    enum { MOST_BYTES = 256 * 1024 };
    const QByteArray head = QByteArray::fromHex("2afcff0f"); // a body of 262,140 bytes
    EXPECT_TRUE(decodedCommand(head + QByteArray(MOST_BYTES - 4, 'x')));
    EXPECT_FALSE(decodedCommand(QByteArray::fromHex("2afdff0f") + QByteArray(MOST_BYTES - 3, 'x')));
}

TEST(SparkplugCommand, IsNoneWhenItHoldsTooManyMetrics)
{
    const QByteArray metric = QByteArray::fromHex("1200");
    const std::optional<Command> most = decodedCommand(metric.repeated(10000));
    ASSERT_TRUE(most);
    EXPECT_EQ(10000U, most->metrics.size());
    EXPECT_FALSE(decodedCommand(metric.repeated(10001)));
}
