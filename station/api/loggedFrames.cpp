#include "api/loggedFrames.h"

#include "api/frameDocument.h"
#include "session/framePacket.h"

#include <QtEndian>

namespace {

// The file format of libpcap, pcap-savefile(5), with the low byte of each number first.
enum {
    MICROSECOND_FILE = 0xA1B2C3D4,
    VERSION = 4 << 16 | 2, ///< 2.4: two numbers of 16 bits
    LONGEST_PACKET = 65535,
    RAW_IP = 101 ///< LINKTYPE_RAW
};

enum { MS_PER_SECOND = 1000, US_PER_MS = 1000 };

void appendNumber(QByteArray& file, quint32 number)
{
    const quint32 lowFirst = qToLittleEndian(number);
    file.append(reinterpret_cast<const char*>(&lowFirst), int(sizeof lowFirst));
}

void appendHeader(QByteArray& file)
{
    appendNumber(file, MICROSECOND_FILE);
    appendNumber(file, VERSION);
    appendNumber(file, 0); // time zone
    appendNumber(file, 0); // accuracy of the times
    appendNumber(file, LONGEST_PACKET);
    appendNumber(file, RAW_IP);
}

void appendPacket(QByteArray& file, qint64 time, const QByteArray& packet)
{
    appendNumber(file, quint32(time / MS_PER_SECOND));
    appendNumber(file, quint32(time % MS_PER_SECOND * US_PER_MS));
    appendNumber(file, quint32(packet.size()));
    appendNumber(file, quint32(packet.size()));
    file.append(packet);
}

} // namespace

std::vector<GatheredFrame> gatheredFrames(const FrameLog& log)
{
    FrameGatherer gatherer;
    std::vector<GatheredFrame> frames;
    bool isRequestKnown = false;
    for (const LoggedFrame& logged : log.since(0)) {
        isRequestKnown =
            isRequestKnown || logged.number == 1 || logged.direction != FrameRecord::RECEIVED;
        if (!isRequestKnown) continue;
        const std::vector<GatheredFrame> gathered = gatherer.add(recordOf(logged));
        frames.insert(frames.end(), gathered.begin(), gathered.end());
    }
    return frames;
}

QByteArray captureOf(const std::vector<GatheredFrame>& frames)
{
    QByteArray file;
    appendHeader(file);
    int packets = 0;
    for (const GatheredFrame& frame : frames) {
        if (isCaptured(frame)) appendPacket(file, frame.time, framePacket(frame, ++packets));
    }
    return file;
}
