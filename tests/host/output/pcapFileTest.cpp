#include "output/pcapFile.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <pcap/pcap.h>

#include <string>

// Frames of the MODBUS Application Protocol V1.1b3 (6.3 to 6.12, 7); checksums by pymodbus'
// computeCRC.

namespace {

const qint64 CLOCK = 1700000000999999; // microseconds since 1970
const int IP_BYTES = 20;
const int HEADER_BYTES = 28; // IPv4 without options (RFC 791) and UDP (RFC 768)

bool never()
{
    return false;
}

struct Exchange
{
    const char* request;
    const char* reply;
};

const Exchange EXCHANGES[] = {{"01030BB80002460A", "010304123456788107"},
                              {"010400000003B00B", "010406000100020003BC92"},
                              {"01050005FF009C3B", "01050005FF009C3B"},
                              {"01060BB904D2D896", "01060BB904D2D896"},
                              {"010F0005000A02CD01703D", "010F0005000AC5CD"},
                              {"01100C1C0002040001FFFE3646", "01100C1C0002835E"},
                              {"01031388000100A4", "018302C0F1"}};

struct Packet
{
    qint64 time;
    QByteArray bytes;

    QByteArray payload() const
    {
        return bytes.mid(HEADER_BYTES);
    }
};

int wordAt(const QByteArray& bytes, int at)
{
    return static_cast<unsigned char>(bytes.at(at)) * 256 +
           static_cast<unsigned char>(bytes.at(at + 1));
}

/// RFC 1071: the sum over bytes that include their checksum is all ones.
bool sumsToOnes(QByteArray bytes)
{
    if (bytes.size() % 2 != 0) bytes.append('\0');
    unsigned sum = 0;
    for (int i = 0; i < int(bytes.size()); i += 2)
        sum += unsigned(wordAt(bytes, i));
    while (sum > 0xFFFFu)
        sum = (sum & 0xFFFFu) + (sum >> 16);
    return sum == 0xFFFFu;
}

/// Reads the packets of a capture with libpcap.
std::vector<Packet> packetsIn(const QString& fileName)
{
    char error[PCAP_ERRBUF_SIZE] = "";
    pcap_t* const capture = pcap_open_offline(fileName.toLocal8Bit().constData(), error);
    EXPECT_NE(nullptr, capture) << error;
    std::vector<Packet> packets;
    if (capture == nullptr) return packets;
    EXPECT_EQ(DLT_RAW, pcap_datalink(capture));
    pcap_pkthdr* header = nullptr;
    const u_char* bytes = nullptr;
    int result = 0;
    while ((result = pcap_next_ex(capture, &header, &bytes)) == 1) {
        EXPECT_EQ(header->len, header->caplen);
        packets.push_back({qint64(header->ts.tv_sec) * 1000000 + qint64(header->ts.tv_usec),
                           QByteArray(reinterpret_cast<const char*>(bytes), int(header->caplen))});
    }
    EXPECT_EQ(PCAP_ERROR_BREAK, result) << pcap_geterr(capture);
    pcap_close(capture);
    return packets;
}

FrameRecord record(qint64 time, FrameRecord::Direction direction, const char* hex)
{
    return {time, direction, QByteArray::fromHex(hex)};
}

class PcapFileInAFolder : public testing::Test
{
protected:
    QString fileName() const
    {
        return m_folder.filePath(QString::fromLatin1("session.pcap"));
    }

    void writeExchanges() const
    {
        PcapFile file(fileName(), CLOCK, never);
        qint64 time = 0;
        for (const Exchange& exchange : EXCHANGES) {
            file.add(record(time, FrameRecord::SENT, exchange.request));
            file.add(record(time + 7, FrameRecord::RECEIVED, exchange.reply));
            time += 1000;
        }
    }

private:
    QTemporaryDir m_folder;
};

std::string failureOf(const QString& fileName)
{
    try {
        PcapFile file(fileName, 0, never);
    } catch (const PcapError& error) {
        return error.what();
    }
    return "written";
}

} // namespace

TEST_F(PcapFileInAFolder, HoldsEachFrameAsOnePacketInOrder)
{
    writeExchanges();
    const std::vector<Packet> packets = packetsIn(fileName());
    ASSERT_EQ(2 * std::size(EXCHANGES), packets.size());
    for (size_t i = 0; i < std::size(EXCHANGES); ++i) {
        EXPECT_EQ(QByteArray::fromHex(EXCHANGES[i].request), packets[2 * i].payload()) << i;
        EXPECT_EQ(QByteArray::fromHex(EXCHANGES[i].reply), packets[2 * i + 1].payload()) << i;
    }
}

TEST_F(PcapFileInAFolder, StampsPacketsWithTheWallClock)
{
    writeExchanges();
    const std::vector<Packet> packets = packetsIn(fileName());
    ASSERT_LE(4u, packets.size());
    EXPECT_EQ(1700000000999999, packets[0].time);
    EXPECT_EQ(1700000001000006, packets[1].time);
    EXPECT_EQ(1700000001000999, packets[2].time);
    EXPECT_EQ(1700000001001006, packets[3].time);
}

TEST_F(PcapFileInAFolder, RequestsGoToThePlcsPortAndAnswersComeFromIt)
{
    writeExchanges();
    bool isRequest = true;
    for (const Packet& packet : packetsIn(fileName())) {
        const int from = wordAt(packet.bytes, IP_BYTES);
        const int to = wordAt(packet.bytes, IP_BYTES + 2);
        EXPECT_EQ(10502, isRequest ? to : from);
        EXPECT_NE(10502, isRequest ? from : to);
        EXPECT_EQ(QByteArray::fromHex("C0000202"), packet.bytes.mid(isRequest ? 16 : 12, 4));
        EXPECT_EQ(QByteArray::fromHex("C0000201"), packet.bytes.mid(isRequest ? 12 : 16, 4));
        isRequest = !isRequest;
    }
}

TEST_F(PcapFileInAFolder, FencesGoToThePlcsPort)
{
    {
        PcapFile file(fileName(), CLOCK, never);
        file.add(record(0, FrameRecord::SENT_FENCE, "01030BB80002460A"));
        file.add(record(9, FrameRecord::RECEIVED, "010304123456788107"));
    }
    const std::vector<Packet> packets = packetsIn(fileName());
    ASSERT_EQ(2u, packets.size());
    EXPECT_EQ(QByteArray::fromHex("01030BB80002460A"), packets[0].payload());
    EXPECT_EQ(10502, wordAt(packets[0].bytes, IP_BYTES + 2));
    EXPECT_EQ(10502, wordAt(packets[1].bytes, IP_BYTES));
}

TEST_F(PcapFileInAFolder, PacketsHaveRightLengthsAndChecksums)
{
    writeExchanges();
    for (const Packet& packet : packetsIn(fileName())) {
        const QByteArray& bytes = packet.bytes;
        EXPECT_EQ(0x45, bytes.at(0));
        EXPECT_EQ(17, bytes.at(9));
        EXPECT_EQ(bytes.size(), wordAt(bytes, 2));
        EXPECT_EQ(bytes.size() - IP_BYTES, wordAt(bytes, IP_BYTES + 4));
        EXPECT_TRUE(sumsToOnes(bytes.left(IP_BYTES)));
        const QByteArray pseudoHeader =
            bytes.mid(12, 8) + QByteArray("\0\x11", 2) + bytes.mid(IP_BYTES + 4, 2);
        EXPECT_TRUE(sumsToOnes(pseudoHeader + bytes.mid(IP_BYTES)));
        EXPECT_NE(0, wordAt(bytes, IP_BYTES + 6));
    }
}

TEST_F(PcapFileInAFolder, JoinsPiecesAndOmitsStrayBytes)
{
    {
        PcapFile file(fileName(), CLOCK, never);
        file.add(record(0, FrameRecord::SENT, "01030BB80002460A"));
        file.add(record(10, FrameRecord::RECEIVED, "FF010304"));
        file.add(record(20, FrameRecord::RECEIVED, "123456788107FF"));
        file.add(record(30, FrameRecord::SENT, "01030BB80002460A"));
        file.add(record(40, FrameRecord::RECEIVED, "010304123456798107"));
        file.add(record(50, FrameRecord::SENT, "00060BB904D2D947"));
    }
    const std::vector<Packet> packets = packetsIn(fileName());
    ASSERT_EQ(4u, packets.size());
    EXPECT_EQ(QByteArray::fromHex("010304123456788107"), packets[1].payload());
    EXPECT_EQ(CLOCK + 10, packets[1].time);
    EXPECT_EQ(QByteArray::fromHex("01030BB80002460A"), packets[2].payload());
    EXPECT_EQ(QByteArray::fromHex("00060BB904D2D947"), packets[3].payload());
}

TEST_F(PcapFileInAFolder, OmitsAnAnswerBehindAHole)
{
    PcapFile file(fileName(), CLOCK, never);
    file.add(record(0, FrameRecord::SENT, EXCHANGES[0].request));
    file.addHole();
    file.add(record(7, FrameRecord::RECEIVED, EXCHANGES[0].reply));
    EXPECT_EQ(1u, packetsIn(fileName()).size());
    file.add(record(1000, FrameRecord::SENT, EXCHANGES[1].request));
    file.add(record(1007, FrameRecord::RECEIVED, EXCHANGES[1].reply));
    EXPECT_EQ(3u, packetsIn(fileName()).size());
}

TEST_F(PcapFileInAFolder, IsReadableWhileItIsWritten)
{
    PcapFile file(fileName(), CLOCK, never);
    EXPECT_EQ(0u, packetsIn(fileName()).size());
    file.add(record(0, FrameRecord::SENT, "01030BB80002460A"));
    EXPECT_EQ(1u, packetsIn(fileName()).size());
    file.add(record(9, FrameRecord::RECEIVED, "010304123456788107"));
    EXPECT_EQ(2u, packetsIn(fileName()).size());
}

TEST_F(PcapFileInAFolder, ReplacesAnOlderCapture)
{
    writeExchanges();
    {
        PcapFile file(fileName(), CLOCK, never);
    }
    EXPECT_EQ(0u, packetsIn(fileName()).size());
}

TEST(PcapFile, UnwritableFileIsNamedInOneSentence)
{
    EXPECT_EQ("the capture /nowhere/at/all.pcap cannot be written: No such file or directory",
              failureOf(QString::fromLatin1("/nowhere/at/all.pcap")));
    EXPECT_EQ("the capture /dev/full cannot be written: No space left on device",
              failureOf(QString::fromLatin1("/dev/full")));
}
