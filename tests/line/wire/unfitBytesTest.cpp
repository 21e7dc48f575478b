#include "wire/unfitBytes.h"

#include "modbusFrames.h"
#include "randomSource.h"

#include <gtest/gtest.h>

#include <string>

// Frames of the MODBUS Application Protocol V1.1b3 (6.3, 6.6, 6.12, 7) and headers of MODBUS
// Messaging on TCP/IP V1.0b (3.1.3); checksums by pymodbus' computeCRC.

namespace {

const char* const READ = "01030BB80002460A";
const char* const READ_FIRST = "010300000002C40B"; // register 0
const char* const WRITE = "01060BB904D2D896";
const char* const WRITE_MANY = "01100BB900010212340B4E";

const std::string TCP = "a Modbus TCP header: this peer speaks Modbus TCP, not RTU over TCP";
const std::string ECHO = "the request itself came back: an echoing adapter";
const std::string OTHER_STATION = "an answer of another station, 2";
const std::string OTHER_REQUEST = "an answer to another request";

std::string wrongChecksum(int bytes)
{
    return std::to_string(bytes) +
           " bytes with a wrong checksum: noise, or another baud rate or parity";
}

std::string described(const QByteArray& request, const QByteArray& received)
{
    return describeUnfit(request, received).toStdString();
}

struct Row
{
    const char* request;
    const char* received;
    std::string text;
};

void expectRows(const std::vector<Row>& rows)
{
    for (const Row& row : rows)
        EXPECT_EQ(row.text,
                  described(QByteArray::fromHex(row.request), QByteArray::fromHex(row.received)))
            << row.received << " in place of an answer to " << row.request;
}

/// A request of functions 3 to 6, 15 or 16.
QByteArray randomRequest(RandomSource& random)
{
    const int function = random.pick(std::vector<int>{3, 4, 5, 6, 15, 16});
    QByteArray request;
    request.append(char(random.between(1, 247))).append(char(function));
    putWord(request, random.below(65536));
    if (function == 5) {
        putWord(request, random.oneIn(2) ? 0xFF00 : 0);
    } else if (function == 6) {
        putWord(request, random.below(65536));
    } else {
        const int count = random.between(1, function == 16 ? 123 : 125);
        putWord(request, count);
        const int bytes = function == 16 ? 2 * count : function == 15 ? (count + 7) / 8 : 0;
        if (bytes > 0) request.append(char(bytes));
        for (int i = 0; i < bytes; ++i)
            request.append(char(random.below(256)));
    }
    return frameWith(request);
}

QByteArray randomAnswer(const QByteArray& request, RandomSource& random)
{
    if (random.oneIn(4)) return refusalOf(request, random.below(256));
    if (byteOf(request, 1) > 4) return frameWith(request.left(6));
    return readReplyOf(request, [&random](int) { return random.below(65536); });
}

QByteArray randomBytes(int count, RandomSource& random)
{
    QByteArray bytes;
    while (bytes.size() < count)
        bytes.append(char(random.below(random.oneIn(2) ? 8 : 256)));
    return bytes;
}

} // namespace

TEST(UnfitBytes, AnswersAndNoBytesHaveNoDescription)
{
    expectRows({{READ, "", ""},
                {READ, "010304123456788107", ""},
                {READ, "018302C0F1", ""},
                {READ, "FFFF018302C0F1FF", ""},
                {WRITE, WRITE, ""},
                {WRITE_MANY, "01100BB90001D208", ""},
                {"00060BB904D2D947", "FF", ""}, // a broadcast has no answer
                {"", "FF", ""},
                {"0102", "010203", ""}});
}

TEST(UnfitBytes, FrameOfAnotherStationIsNamed)
{
    expectRows({{READ, "02030412345678B207", OTHER_STATION},
                {READ, "FF02030412345678B207", OTHER_STATION},
                {WRITE, "02060BB904D2D8A5", OTHER_STATION}});
}

TEST(UnfitBytes, FrameOfTheStationAnswersAnotherRequest)
{
    expectRows({{READ, "010302ABCD06E1", OTHER_REQUEST},     // one register, not two
                {READ, "0104041234567880B0", OTHER_REQUEST}, // input registers
                {WRITE, "010304123456788107", OTHER_REQUEST}});
}

TEST(UnfitBytes, RequestThatCameBackIsAnEcho)
{
    expectRows({{READ, READ, ECHO},
                {READ,
                 "00"
                 "01030BB80002460A"
                 "FF",
                 ECHO},
                {WRITE_MANY, WRITE_MANY, ECHO}});
}

// Transaction 7, protocol 0, number of bytes behind the length, station 1.
TEST(UnfitBytes, ModbusTcpAnswerToWhatWasAskedIsRecognised)
{
    expectRows({{READ, "00070000000701030412345678", TCP},
                {READ, "000700000007010304", TCP}, // its beginning
                {READ, "000700000003018302", TCP},
                {WRITE, "00070000000601060BB904D2", TCP},
                {WRITE_MANY, "00070000000601100BB90001", TCP}});
}

// A server that takes the RTU frame for a header finds protocol 0 in the number of the register.
TEST(UnfitBytes, ModbusTcpAnswerToTheRtuBytesIsRecognised)
{
    expectRows({{READ_FIRST, "010300000003C48B01", TCP}});
}

TEST(UnfitBytes, ModbusTcpHeaderMustFitWhatWasAsked)
{
    expectRows({{READ, "00070000000702030412345678", wrongChecksum(13)}, // another station
                {READ, "00070000000701040412345678", wrongChecksum(13)}, // another function
                {READ, "000700000005010302ABCD", wrongChecksum(11)},     // another length
                {READ, "00070001000701030412345678", wrongChecksum(13)}, // another protocol
                {READ, "0007000000070103", wrongChecksum(8)}});          // too short to tell
}

TEST(UnfitBytes, FewBytesArePartsOfAnAnswer)
{
    expectRows({{READ, "FF", "1 byte, too few for an answer"},
                {READ, "01030412", "4 bytes, too few for an answer"},
                {READ, "0103041234", "5 of 9 bytes of the answer"},
                {READ, "0103041234567881", "8 of 9 bytes of the answer"},
                {WRITE, "01060BB904D2D8", "7 of 8 bytes of the answer"}});
}

TEST(UnfitBytes, AnythingElseHasAWrongChecksum)
{
    expectRows({{READ, "010304123456788108", wrongChecksum(9)},
                {READ, "FFFFFFFFFF", wrongChecksum(5)},
                {WRITE, "01060BB904D2D897", wrongChecksum(8)}});
}

TEST(UnfitBytes, AnswerAmongRandomBytesHasNoDescription)
{
    RandomSource random(1);
    for (int i = 0; i < 20000; ++i) {
        const QByteArray request = randomRequest(random);
        const QByteArray answer = randomAnswer(request, random);
        const QByteArray received =
            randomBytes(random.below(6), random) + answer + randomBytes(random.below(6), random);
        ASSERT_EQ("", described(request, received))
            << request.toHex().toStdString() << " " << received.toHex().toStdString();
    }
}

// Random bytes, cut and damaged answers, and cut requests.
TEST(UnfitBytes, BytesOfEveryKindHaveADescriptionOrAnAnswer)
{
    RandomSource random(2);
    int texts = 0;
    for (int i = 0; i < 20000; ++i) {
        const QByteArray request = randomRequest(random);
        QByteArray received = random.oneIn(3)   ? randomBytes(random.below(300), random)
                              : random.oneIn(2) ? randomAnswer(request, random)
                                                : randomRequest(random);
        if (!received.isEmpty() && random.oneIn(2)) {
            const int at = random.below(int(received.size()));
            received[at] = char(received.at(at) ^ (1 << random.below(8)));
        }
        received = received.left(random.below(int(received.size()) + 1));
        const QByteArray cut = random.oneIn(8) ? request.left(random.below(12)) : request;
        texts += describeUnfit(cut, received).isEmpty() ? 0 : 1;
    }
    EXPECT_GT(texts, 10000);
}
