#ifndef PCAP_FILE_H
#define PCAP_FILE_H

#include "session/frameGatherer.h"

#include <QString>

#include <memory>
#include <stdexcept>

struct pcap;
struct pcap_dumper;

/// The capture cannot be written. what() is one sentence.
struct PcapError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Writes a capture that Wireshark's Modbus RTU dissector reads:
///
///   tshark -r FILE -o mbrtu.udp.port:10502 -o mbrtu.crc_verification:TRUE
///   wireshark -o mbrtu.udp.port:10502 -o mbrtu.crc_verification:TRUE FILE
///
/// framePacket() says what a packet is, and isCaptured() which frames become one. The trace
/// contains all frames.
class PcapFile
{
public:
    /// @param fileName    see writtenFile.h; a terminal as standard output is refused
    /// @param startClock  wall-clock time of the records' time 0, in microseconds since 1970 (UTC)
    /// @param isToEnd     whether the program is to end: a waiting reader is then given up
    /// @throws PcapError when the file cannot be written
    PcapFile(const QString& fileName, qint64 startClock, bool (*isToEnd)());
    ~PcapFile();

    /// Adds a record. Writes the frames that it completes and flushes the file.
    /// @throws PcapError when they cannot be written
    void add(const FrameRecord& record);

    /// Notes that records were dropped here.
    void addHole();

private:
    struct CloseHandle
    {
        void operator()(pcap* handle) const;
    };
    struct CloseDump
    {
        void operator()(pcap_dumper* dump) const;
    };

    void write(const GatheredFrame& frame);
    void flush();

    const QString m_fileName;
    const qint64 m_startClock;
    std::unique_ptr<pcap, CloseHandle> m_handle;
    std::unique_ptr<pcap_dumper, CloseDump> m_dump;
    FrameGatherer m_gatherer;
    quint16 m_packets = 0; ///< IPv4 identification, wraps to 0
};

#endif
