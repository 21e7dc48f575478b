#ifndef PCAP_FILE_H
#define PCAP_FILE_H

#include "output/frameGatherer.h"

#include <QString>

#include <memory>
#include <stdexcept>

struct pcap;
struct pcap_dumper;

/// The capture cannot be written; what() is one sentence.
struct PcapError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Writes a capture that Wireshark's Modbus RTU dissector reads:
///
///   tshark -r FILE -o mbrtu.udp.port:10502 -o mbrtu.crc_verification:TRUE
///   wireshark -o mbrtu.udp.port:10502 -o mbrtu.crc_verification:TRUE FILE
///
/// A request and its echo have the same bytes, so the dissector tells them apart by the port alone.
/// Each frame is therefore one made-up UDP datagram over IPv4 between 192.0.2.1 (the host) and port
/// 10502 of 192.0.2.2 (the PLC), whatever the link is. "Decode As" sets no port for the dissector:
/// with it alone, functions 5 and 6 cannot be told from their echoes.
///
/// Every sent frame is written, and of what was received the recognised answers. Stray bytes,
/// damaged replies and frames that answer nothing, such as another station's, are not: they would
/// only show as malformed packets or as answers. They are in the trace.
class PcapFile
{
public:
    enum { PLC_PORT = 10502 };

    /// @param fileName    replaced when it exists; "-" is standard output
    /// @param startClock  wall clock at the records' time 0, in microseconds since 1970 (UTC)
    /// @throws PcapError when the file cannot be written
    PcapFile(const QString& fileName, qint64 startClock);
    ~PcapFile();

    /// Writes the frames that are complete by now through to the file.
    /// @throws PcapError when they cannot be written
    void add(const FrameRecord& record);

    /// Records that belong here were not kept.
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
    quint16 m_packets = 0; ///< starts again at 0, as IPv4 has it
};

#endif
