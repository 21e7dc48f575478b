// A host for the field in one file. It polls, writes until each value is confirmed, reads once,
// transfers a recipe both ways and verifies it. The exchange library tells each request's answer
// from all other bytes on the line.
// usage: carefulHost DEVICE     a serial port that is set to 38400 baud, or a pseudo-terminal
// Exit status: 0 every step was confirmed and verified, 1 usage, 2 a step failed.

#include <exchange/exchangeMachine.h>
#include <quorvane_ka_kb_plc.h>
#include <wire/exceptionText.h>
#include <wire/replyFrames.h>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <deque>
#include <vector>

namespace {

enum { STATION = 1, ONE_SHOT = 1, ANSWER_US = 30000, BUSY_PAUSE_US = 100000 };
enum { FIRST_WRITTEN = 3100, WRITES = 8, READ_ONCE = 3200, RECIPE = 3300, RECIPE_WORDS = 40 };
enum { MOST_TRIES = 60 }; // for a request that is refused or lost

qint64 now()
{
    typedef std::chrono::steady_clock Clock;
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch())
        .count();
}

int openLine(const char* device)
{
    const int line = open(device, O_RDWR | O_NOCTTY);
    termios settings;
    if (line < 0 || tcgetattr(line, &settings) != 0) return -1;
    cfmakeraw(&settings);
    return tcsetattr(line, TCSANOW, &settings) == 0 ? line : -1;
}

// How one request of the driver ended.
struct Ended
{
    FRAME_PRO frame;
    int result; // of intf_dealRcvFrame
    EndedExchange exchange;
};

// Driver, exchange machine and line. The machine returns the bytes to send and the time of the next
// call. The host owns port and clock.
class Host
{
public:
    explicit Host(int line) : m_line(line), m_machine(LineTiming(LineSettings()), settings())
    {
        m_machine.linkOpened(now());
    }

    // Carries one request of the driver through all its attempts. False: there was nothing to send.
    bool exchange(Ended& ended)
    {
        if (!next(ended.frame)) return false;
        bool isRepeat = false;
        do {
            ended.exchange = carry(ended.frame, isRepeat);
            ended.result = handIn(ended.exchange);
            isRepeat = true;
        } while (ended.result == REPLY_RETRY && next(ended.frame));
        if (ended.result == REPLY_GIVEN_UP) ++givenUp;
        return true;
    }

    int givenUp = 0;

private:
    static ExchangeMachine::Settings settings()
    {
        ExchangeMachine::Settings made;
        made.answer = ANSWER_US;
        made.seed = unsigned(getpid());
        return made;
    }

    // A single 0 does not mean that the driver is idle, so ask twice.
    static bool next(FRAME_PRO& frame)
    {
        if (intf_getSendFrame(&frame) != 0) return true;
        return intf_getSendFrame(&frame) != 0;
    }

    // A refusal is final: hand it in until the driver gives the request up. A busy PLC is
    // different: pause, then let the driver offer the request again.
    static int handIn(const EndedExchange& ended)
    {
        QByteArray reply = ended.reply;
        QString errorText;
        int result = intf_dealRcvFrame(reply, errorText);
        if (ended.end != END_REFUSED) return result;
        const int code = exceptionCodeOf(ended.reply);
        if (isAskedAgain(code)) {
            usleep(BUSY_PAUSE_US);
            return result;
        }
        std::printf("refused: %s\n", exceptionText(code));
        while (result == REPLY_RETRY)
            result = intf_dealRcvFrame(reply, errorText);
        return result;
    }

    // For a request that fits in no frame the driver offers a frame without bytes. An empty reply
    // ends the request.
    static EndedExchange nothingSent(const FRAME_PRO& frame)
    {
        return EndedExchange{false, frame.var.station, END_SILENT, false, QByteArray(),
                             -1,    QString(),         0};
    }

    // One attempt of one request. The machine may send fences during the attempt.
    EndedExchange carry(const FRAME_PRO& frame, bool isRepeat)
    {
        if (frame.sendLen == 0) return nothingSent(frame);
        m_machine.start(QByteArray(reinterpret_cast<const char*>(frame.sendBuf), frame.sendLen),
                        isRepeat, now());
        while (true) {
            const ExchangeMachine::Step step = m_machine.advance(now());
            if (!step.send.isEmpty()) sendAll(step.send);
            for (const EndedExchange& ended : m_machine.takeEnded()) {
                if (!ended.isFence && ended.end != END_LATE) return ended;
            }
            receive(step.wakeAt - now());
        }
    }

    void sendAll(const QByteArray& bytes)
    {
        for (int sent = 0; sent < bytes.size();) {
            const ssize_t some =
                write(m_line, bytes.constData() + sent, size_t(bytes.size() - sent));
            if (some <= 0) return; // the request then ends by its time-out
            sent += int(some);
        }
    }

    void receive(qint64 microseconds)
    {
        pollfd readable = {m_line, POLLIN, 0};
        const timespec left = {time_t(qMax<qint64>(microseconds, 0) / 1000000),
                               long(qMax<qint64>(microseconds, 0) % 1000000 * 1000)};
        if (ppoll(&readable, 1, &left, nullptr) <= 0) return;
        char part[512];
        const ssize_t got = read(m_line, part, sizeof part);
        if (got > 0) m_machine.received(QByteArray(part, int(got)), now());
    }

    const int m_line;
    ExchangeMachine m_machine;
};

KEY_ADDRESS words(int number, int count)
{
    KEY_ADDRESS key;
    key.station = STATION;
    key.regName = QLatin1String("MW");
    key.addr = number;
    key.count = count;
    return key;
}

int shown(int number)
{
    unsigned char value[2] = {0, 0};
    intf_getData(STATION, QLatin1String("MW"), number, 1, value);
    return value[0] + 256 * value[1];
}

// Writes one word until the PLC confirms it. A write that the driver gave up is queued again.
bool writeWord(Host& host, int number, int value)
{
    unsigned char bytes[2] = {static_cast<unsigned char>(value & 255),
                              static_cast<unsigned char>(value >> 8)};
    for (int tries = 0; tries < MOST_TRIES; ++tries) {
        intf_setData(STATION, QLatin1String("MW"), number, 1, bytes, 0);
        Ended ended;
        do {
            if (!host.exchange(ended)) return false;
        } while (ended.frame.itemCount != 0); // the frame was a poll, not the write
        if (ended.result == REPLY_ACCEPTED) return true;
    }
    return false;
}

// Exchanges until the polled block has been read.
bool pollOnce(Host& host)
{
    Ended ended;
    for (int tries = 0; tries < MOST_TRIES; ++tries) {
        if (!host.exchange(ended)) return false;
        if (ended.result == REPLY_ACCEPTED && ended.frame.var.varId != ONE_SHOT) return true;
    }
    return false;
}

// Reads one word once. A read that the driver gave up has left its queue, so it is queued again.
bool readOnce(Host& host, int number)
{
    for (int tries = 0; tries < MOST_TRIES; ++tries) {
        KEY_ADDRESS once = words(number, 1);
        intf_addConditionRead(once, ONE_SHOT);
        Ended ended;
        do {
            if (!host.exchange(ended)) return false;
        } while (ended.frame.var.varId != ONE_SHOT);
        if (ended.result == REPLY_ACCEPTED) return true;
    }
    return false;
}

// Transfers the recipe in one direction. The driver lowers the flag after a failure, too: the
// result of the last frame tells success from failure.
bool transfer(Host& host, unsigned char* shared, RecipeFlag flag)
{
    for (int tries = 0; tries < MOST_TRIES; ++tries) {
        shared[flag] = 1;
        Ended ended;
        while (shared[flag] == 1) {
            if (!host.exchange(ended)) return false;
        }
        if (ended.result == REPLY_ACCEPTED) return true;
    }
    return false;
}

bool transferBothWays(Host& host, unsigned char* shared, std::vector<unsigned char>& values)
{
    QVector<_RCP_VAR_PRO> records;
    for (int half = 0; half < 2; ++half) {
        _RCP_VAR_PRO record;
        record.linkNo = 1;
        record.station = STATION;
        record.regName = QLatin1String("MW");
        record.addr = RECIPE + half * RECIPE_WORDS; // a gap between the records keeps two blocks
        record.count = RECIPE_WORDS / 2;
        record.bufOffset = half * RECIPE_WORDS / 2;
        records.append(record);
    }
    for (size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<unsigned char>(i + 1);
    const std::vector<unsigned char> written = values;
    if (intf_setRcpAddress(records) == 0) return false;
    if (!transfer(host, shared, RECIPE_DOWNLOAD_FLAG)) return false;
    values.assign(values.size(), 0);
    return transfer(host, shared, RECIPE_UPLOAD_FLAG) && values == written;
}

} // namespace

int main(int argc, char** argv)
{
    const int line = argc == 2 ? openLine(argv[1]) : -1;
    if (line < 0) {
        std::fprintf(stderr, "usage: carefulHost DEVICE\n");
        return 1;
    }
    std::vector<unsigned char> shared(RECIPE_UPLOAD_FLAG + 1);
    std::vector<unsigned char> recipe(2 * RECIPE_WORDS);
    char properties[] = "1#0#0#3#125"; // context, localOnly, number, retryLimit, mergeLimit
    QMutex mutex;                      // this host has one thread, so it never locks the mutex
    int status = 0;
    intf_initProperty(shared.data(), 0, recipe.data(), &status, properties, &mutex);
    QList<KEY_ADDRESS> keys;
    keys.append(words(FIRST_WRITTEN, WRITES));
    intf_addrMerge(keys);

    Host host(line);
    int confirmed = 0;
    for (int i = 0; i < WRITES; ++i)
        confirmed += writeWord(host, FIRST_WRITTEN + i, 1000 + i) ? 1 : 0;
    const bool isRead = readOnce(host, READ_ONCE) && pollOnce(host);
    const bool isTransferred = transferBothWays(host, shared.data(), recipe);

    std::printf("%d writes confirmed, %d requests given up\n", confirmed, host.givenUp);
    std::printf("recipe %s\n", isTransferred ? "verified" : "not verified");
    for (int i = 0; i < WRITES; ++i)
        std::printf("MW %d = %d\n", FIRST_WRITTEN + i, shown(FIRST_WRITTEN + i));
    std::printf("MW %d = %d\n", READ_ONCE, shown(READ_ONCE));
    close(line);
    return confirmed == WRITES && isRead && isTransferred ? 0 : 2;
}
