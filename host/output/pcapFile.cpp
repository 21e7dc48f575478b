#include "output/pcapFile.h"

#include "output/writtenFile.h"
#include "session/framePacket.h"
#include "wire/timeUnits.h"

#include <pcap/pcap.h>

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

enum { LONGEST_PACKET = 65535 };

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
    const QByteArray bytes = framePacket(frame, ++m_packets);
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
        if (isCaptured(frame)) write(frame);
    }
}
