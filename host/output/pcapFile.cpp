#include "output/pcapFile.h"

#include "output/writtenFile.h"
#include "wire/timeUnits.h"

#include <pcap/pcap.h>

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

enum {
    LONGEST_PACKET = 65535,
    HOST_PORT = 50000,
    IP_BYTES = 20,
    UDP_BYTES = 8,
    UDP_PROTOCOL = 17,
    TIME_TO_LIVE = 64
};

const quint32 HOST_ADDRESS = 0xC0000201; // 192.0.2.1 and .2 are kept for examples by RFC 5737
const quint32 PLC_ADDRESS = 0xC0000202;

QByteArray word(int value)
{
    QByteArray bytes;
    bytes += static_cast<char>((value >> 8) & 0xFF);
    bytes += static_cast<char>(value & 0xFF);
    return bytes;
}

QByteArray longWord(quint32 value)
{
    return word(int(value >> 16)) + word(int(value & 0xFFFFu));
}

/// RFC 1071. An odd number of bytes is padded with a zero.
int internetChecksum(const QByteArray& bytes)
{
    quint32 sum = 0;
    for (int i = 0; i < bytes.size(); ++i) {
        const quint32 byte = static_cast<unsigned char>(bytes.at(i));
        sum += i % 2 == 0 ? byte << 8 : byte;
    }
    while (sum > 0xFFFFu)
        sum = (sum & 0xFFFFu) + (sum >> 16);
    return int(~sum & 0xFFFFu);
}

/// RFC 768. A checksum of 0 is sent as 0xFFFF, because 0 means "no checksum".
QByteArray datagram(const QByteArray& addresses, int from, int to, const QByteArray& payload)
{
    const QByteArray length = word(UDP_BYTES + int(payload.size()));
    const QByteArray start = word(from) + word(to) + length;
    const int sum =
        internetChecksum(addresses + word(UDP_PROTOCOL) + length + start + word(0) + payload);
    return start + word(sum == 0 ? 0xFFFF : sum) + payload;
}

/// RFC 791, without options.
QByteArray packet(const GatheredFrame& frame, int number)
{
    const bool sent = isSent(frame);
    const QByteArray addresses =
        longWord(sent ? HOST_ADDRESS : PLC_ADDRESS) + longWord(sent ? PLC_ADDRESS : HOST_ADDRESS);
    const QByteArray content =
        datagram(addresses, sent ? int(HOST_PORT) : int(PcapFile::PLC_PORT),
                 sent ? int(PcapFile::PLC_PORT) : int(HOST_PORT), frame.bytes);
    const QByteArray start = word(0x4500) + word(IP_BYTES + int(content.size())) +
                             word(number & 0xFFFF) + word(0) +
                             word(TIME_TO_LIVE * 256 + UDP_PROTOCOL);
    return start + word(internetChecksum(start + word(0) + addresses)) + addresses + content;
}

[[noreturn]] void fail(const QString& fileName, const char* reason)
{
    throw PcapError("the capture " + fileName.toStdString() + " cannot be written: " + reason);
}

} // namespace

void PcapFile::CloseHandle::operator()(pcap* handle) const
{
    pcap_close(handle);
}

void PcapFile::CloseDump::operator()(pcap_dumper* dump) const
{
    pcap_dump_close(dump);
}

PcapFile::PcapFile(const QString& fileName, qint64 startClock, bool (*isToEnd)())
    : m_fileName(fileName),
      m_startClock(startClock),
      m_handle(pcap_open_dead(DLT_RAW, LONGEST_PACKET))
{
    if (m_handle == nullptr) fail(fileName, "out of memory");
    if (isStandardOutput(fileName) && isatty(STDOUT_FILENO))
        fail(fileName, "standard output is a terminal");
    try {
        // The dump owns the stream from here on, also after a failure.
        m_dump.reset(pcap_dump_fopen(m_handle.get(), openFile(fileName, isToEnd).release()));
    } catch (const WriteError& error) {
        fail(fileName, error.what());
    }
    if (m_dump == nullptr) fail(fileName, pcap_geterr(m_handle.get()));
    flush();
}

PcapFile::~PcapFile() = default;

void PcapFile::flush()
{
    if (pcap_dump_flush(m_dump.get()) != 0) fail(m_fileName, std::strerror(errno));
}

void PcapFile::write(const GatheredFrame& frame)
{
    const QByteArray bytes = packet(frame, ++m_packets);
    const qint64 clock = m_startClock + frame.time;
    pcap_pkthdr header = {};
    header.ts.tv_sec = decltype(header.ts.tv_sec)(clock / SECOND);
    header.ts.tv_usec = decltype(header.ts.tv_usec)(clock % SECOND);
    header.caplen = bpf_u_int32(bytes.size());
    header.len = header.caplen;
    pcap_dump(reinterpret_cast<u_char*>(m_dump.get()), &header,
              reinterpret_cast<const u_char*>(bytes.constData()));
    flush();
}

void PcapFile::addHole()
{
    m_gatherer.flushAtHole();
}

void PcapFile::add(const FrameRecord& record)
{
    for (const GatheredFrame& frame : m_gatherer.add(record)) {
        if (frame.kind != GatheredFrame::STRAY) write(frame);
    }
}
