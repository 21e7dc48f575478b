// A host in one file: polls two blocks of a PLC, writes one word, and prints changed values.
// usage: tinyHost DEVICE     a serial port that is set to 38400 baud, or a pseudo-terminal

#include <quorvane_ka_kb_plc.h>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <vector>

namespace {

enum { STATION = 1, SILENT_INTERVAL_US = 1750, ANSWER_MS = 500, EXCHANGES = 12 };

struct Change
{
    int station;
    QString area;
    int number;
};

std::vector<Change> changes;

// Only notes the change: the new value is not in the cache yet.
void noteChange(int, int station, QString& area, int number)
{
    changes.push_back(Change{station, area, number});
}

// unitMode: -1 for bits, 0 for words.
KEY_ADDRESS key(const char* area, int number, int count, int unitMode)
{
    KEY_ADDRESS made;
    made.station = STATION;
    made.regName = QString::fromLatin1(area);
    made.addr = number;
    made.count = count;
    made.unitMode = unitMode;
    return made;
}

int openLine(const char* device)
{
    const int line = open(device, O_RDWR | O_NOCTTY);
    termios settings;
    if (line < 0 || tcgetattr(line, &settings) != 0) return -1;
    cfmakeraw(&settings);
    return tcsetattr(line, TCSANOW, &settings) == 0 ? line : -1;
}

// Receives up to `length` bytes, under one deadline that no byte extends.
QByteArray receive(int line, int length)
{
    typedef std::chrono::steady_clock Clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(ANSWER_MS);
    QByteArray bytes;
    while (bytes.size() < length) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd readable = {line, POLLIN, 0};
        if (left.count() <= 0 || poll(&readable, 1, int(left.count())) <= 0) break;
        char part[256];
        const ssize_t got = read(line, part, sizeof part);
        if (got <= 0) break;
        bytes.append(part, int(got));
    }
    return bytes;
}

// The driver tests length and checksum only. So the host compares station, function, byte count or
// echo with the request.
bool answers(const QByteArray& reply, const FRAME_PRO& frame)
{
    const QByteArray request(reinterpret_cast<const char*>(frame.sendBuf), frame.sendLen);
    if (frame.itemCount == 0) return reply.startsWith(request.left(6));
    return reply.startsWith(request.left(2)) && reply.size() > 2 &&
           static_cast<unsigned char>(reply.at(2)) == frame.recvLen - 5;
}

// Carries one request to its end. False: there was nothing to send.
bool exchange(int line)
{
    FRAME_PRO frame;
    if (intf_getSendFrame(&frame) == 0) return false;
    QByteArray reply;
    if (frame.sendLen > 0) {
        usleep(SILENT_INTERVAL_US);
        tcflush(line, TCIFLUSH);
        if (write(line, frame.sendBuf, size_t(frame.sendLen)) == frame.sendLen)
            reply = receive(line, frame.recvLen);
        if (!answers(reply, frame)) reply.clear();
    }
    QString errorText;
    if (intf_dealRcvFrame(reply, errorText) == REPLY_GIVEN_UP)
        std::printf("given up: %s\n", qPrintable(errorText));
    return true;
}

void printChanges()
{
    for (const Change& change : changes) {
        unsigned char value[2] = {0, 0};
        intf_getData(change.station, change.area, change.number, 1, value);
        std::printf("%s %d = %d\n", qPrintable(change.area), change.number,
                    value[0] + 256 * value[1]);
    }
    changes.clear();
}

} // namespace

int main(int argc, char** argv)
{
    const int line = argc == 2 ? openLine(argv[1]) : -1;
    if (line < 0) {
        std::fprintf(stderr, "usage: tinyHost DEVICE\n");
        return 1;
    }

    std::vector<unsigned char> shared(RECIPE_UPLOAD_FLAG + 1);
    char properties[] = "1#0#0#3#125"; // context, localOnly, number, retryLimit, mergeLimit
    QMutex mutex;
    int status = 0;
    intf_initProperty(shared.data(), 0, nullptr, &status, properties, &mutex);
    intf_setAddrValueChangeCallBack(noteChange);

    QList<KEY_ADDRESS> keys;
    keys.append(key("MW", 3050, 2, 0)); // MW100 and MW102
    keys.append(key("QX", 0, 16, -1));  // QX0.0 to QX1.7, a whole group
    std::printf("polls %d blocks\n", intf_addrMerge(keys));

    unsigned char seven[2] = {7, 0}; // low byte first
    intf_setData(STATION, QLatin1String("MW"), 3050, 1, seven, 0);

    for (int i = 0; i < EXCHANGES && exchange(line); ++i)
        printChanges();
    close(line);
    return 0;
}
