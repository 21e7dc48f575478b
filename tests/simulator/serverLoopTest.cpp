#include "report.h"

#include "scriptedLine.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <sstream>

namespace {

const std::int64_t MS = 1000000;

// pymodbus 3.0's RTU framer
const char* const WRITE = "01 06 0B B9 04 D2 D8 96"; // MW 3001 = 1234; the reply is the same
const char* const READ = "01 03 00 00 00 01 84 0A";
const char* const READ_REPLY = "01 03 02 00 00 B8 44";

using Texts = std::vector<std::string>;

std::int64_t nanosecondsNow()
{
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// A loop that serves station 1. A test sets the line and the hosts' steps before run().
class ServedLine : public ::testing::Test
{
protected:
    void runWith(ControlSocket& socket)
    {
        m_control = &socket;
        run();
    }
    void run()
    {
        const LinePacing pacing(m_settings);
        m_handler = std::make_unique<RequestHandler>(m_stations, pacing, FaultSettings(), 1);
        m_loop = std::make_unique<ServerLoop>(m_line, *m_handler, m_stations, m_program, pacing);
        ControlCommands commands(m_stations, *m_handler);
        if (m_control) m_loop->setControl(*m_control, commands);
        sigset_t mask;
        sigprocmask(SIG_BLOCK, nullptr, &mask);
        m_loop->run(m_line.stopRequested(), mask, false);
        EXPECT_FALSE(m_line.timedOut);
    }
    /// What the second host received.
    Texts sentToTheSecondHost() const
    {
        Texts all;
        for (const std::string& text : m_line.sent) {
            if (text[0] == '2') all.push_back(text.substr(3));
        }
        return all;
    }

    static std::string socketPath()
    {
        return ::testing::TempDir() + "control" + std::to_string(getpid());
    }
    /// A client of the socket at socketPath().
    static UniqueDescriptor connected()
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        socketPath().copy(address.sun_path, sizeof address.sun_path - 1);
        UniqueDescriptor client(::socket(AF_UNIX, SOCK_STREAM, 0));
        if (connect(client.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
            failLink("connect");
        return client;
    }
    static void sendLines(const UniqueDescriptor& client, const std::string& lines)
    {
        EXPECT_EQ(ssize_t(lines.size()), write(client.get(), lines.data(), lines.size()));
    }
    static std::string answersTo(const UniqueDescriptor& client)
    {
        char answers[64] = {};
        return read(client.get(), answers, sizeof answers - 1) > 0 ? answers : "";
    }

    ControlSocket* m_control = nullptr;
    ScriptedLine m_line;
    LineSettings m_settings;
    PlcStations m_stations{{1}};
    PlcProgram m_program{{}, 1, {}};
    std::unique_ptr<RequestHandler> m_handler;
    std::unique_ptr<ServerLoop> m_loop;
};

} // namespace

// The reply of 8 bytes is on the wire for 267 ms after it was handed to the serial port, and the
// next request comes at once: a silence that counts from any earlier moment is too long by that.
TEST_F(ServedLine, SilenceStartsAfterTheLastReplyByteOnTheWire)
{
    m_settings.baud = 300;
    m_settings.isSerialPort = true;
    const std::int64_t replyTime = 266666667; // 80 bits
    const std::int64_t began = nanosecondsNow();
    m_line.hostSends(WRITE);
    m_line.afterSend = [this] {
        if (m_line.sent.size() == 1) m_line.hostSends(READ);
        if (m_line.sent.size() == 2) m_line.stop();
    };
    run();
    const std::int64_t passed = nanosecondsNow() - began;
    ASSERT_EQ(1u, m_handler->silences().count());
    EXPECT_LE(m_handler->silences().quantile(0), passed - replyTime);
    EXPECT_GE(m_handler->silences().quantile(0), -replyTime);
}

// The reply to the first host waits for its turnaround when the second host comes.
TEST_F(ServedLine, NewHostGetsNoReplyOfThePreviousHost)
{
    m_settings.turnaroundNs = 5 * MS;
    m_line.hostSends(WRITE);
    m_line.afterReceive = [this] {
        m_line.afterReceive = [] {};
        m_line.nextHostComes();
    };
    m_line.afterAccept = [this] { m_line.hostSends(READ); };
    m_line.afterSend = [this] {
        if (m_line.sent.back() == std::string("2: ") + READ_REPLY) m_line.stop();
    };
    run();
    EXPECT_EQ(Texts{READ_REPLY}, sentToTheSecondHost());
    EXPECT_EQ(1234, m_stations.find(1)->holdingRegister(3001));
}

TEST_F(ServedLine, NewHostDropsHalfARequestOfThePreviousHost)
{
    m_line.hostSends("01 10 00 00 00 64 C8"); // 202 more bytes would follow
    m_line.afterReceive = [this] {
        m_line.afterReceive = [] {};
        m_line.nextHostComes();
    };
    m_line.afterAccept = [this] { m_line.hostSends(READ); };
    m_line.afterSend = [this] { m_line.stop(); };
    m_settings.isNetwork = true; // half a request would wait for 100 ms
    run();
    EXPECT_EQ(Texts{READ_REPLY}, sentToTheSecondHost());
    EXPECT_EQ(1, m_handler->counts().requests);
    EXPECT_EQ(0, m_loop->badFrames());
}

TEST_F(ServedLine, RepliesDueAtTheSameTimeKeepTheirOrder)
{
    m_line.hostSends(std::string(WRITE) + " " + READ);
    m_line.afterSend = [this] {
        if (m_line.sent.size() == 2) m_line.stop();
    };
    run();
    EXPECT_EQ((Texts{std::string("1: ") + WRITE, std::string("1: ") + READ_REPLY}), m_line.sent);
}

TEST_F(ServedLine, NoSilenceIsMeasuredAheadOfANewHost)
{
    m_line.hostSends(WRITE);
    m_line.afterAccept = [this] { m_line.hostSends(READ); };
    m_line.afterSend = [this] {
        if (m_line.sent.size() == 1) m_line.nextHostComes();
        if (m_line.sent.size() == 2) m_line.stop();
    };
    run();
    EXPECT_EQ((Texts{std::string("1: ") + WRITE, std::string("2: ") + READ_REPLY}), m_line.sent);
    EXPECT_EQ(0u, m_handler->silences().count());
    EXPECT_EQ(2u, m_loop->lateness().count());
}

TEST_F(ServedLine, ReportHasCountsSilencesAndLateness)
{
    m_line.hostSends(WRITE);
    m_line.afterSend = [this] {
        if (m_line.sent.size() == 1) m_line.hostSends(std::string("FF FF ") + READ);
        if (m_line.sent.size() == 2) m_line.stop();
    };
    run();
    std::stringstream report;
    writeReport(report, *m_handler, *m_loop, 18);
    std::set<std::string> lines;
    for (std::string line; std::getline(report, line);)
        lines.insert(line);
    for (const char* line : {"requests 2", "replies 2", "bad_frames 1", "echoed 18",
                             "silence_count 1", "lateness_count 2"})
        EXPECT_EQ(1u, lines.count(line)) << line;
}

// The request is answered, and then a client asks for what it wrote.
TEST_F(ServedLine, ControlClientIsServedBesideTheLine)
{
    ControlSocket socket(socketPath());
    const UniqueDescriptor client = connected();
    m_line.hostSends(WRITE);
    m_line.afterSend = [&client] { sendLines(client, "get MW2\nquit\n"); }; // MW 3001
    runWith(socket);
    EXPECT_EQ("ok 1234\nok\n", answersTo(client));
}

// No request has moved the signal from its place's first value, 0.
TEST_F(ServedLine, ControlClientGetsTheSignalsValueOfNow)
{
    Signal slow;
    slow.place = {1, AREA_IX, 0};
    slow.kind = SIGNAL_TOGGLE;
    slow.periodMs = 86400000;
    unsigned seed = 0;
    while (SignalSet({slow}, seed).changes(0)[0].value == 0)
        ++seed;
    m_program = PlcProgram({slow}, seed, {});
    ControlSocket socket(socketPath());
    const UniqueDescriptor client = connected();
    sendLines(client, "get IX0.0\nquit\n");
    runWith(socket);
    EXPECT_EQ("ok 1\nok\n", answersTo(client));
}
