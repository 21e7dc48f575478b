// The program kakb-host against an independent Modbus RTU server.

#include "childProcess.h"
#include "terminalCable.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <sstream>

namespace {

enum { START_MS = 60000, END_MS = 60000, DONE = 0, TIME_OUT = 4 };

using Lines = std::vector<std::string>;

struct HostRun
{
    int status;
    std::string output;
    std::string errors;
};

Lines linesOf(const std::string& text)
{
    std::istringstream stream(text);
    Lines lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// pymodbus at one end of a cable, kakb-host at the other end.
class Peer : public testing::Test
{
protected:
    Peer() : m_server("/usr/bin/python3", {KAKB_PYMODBUS_SERVER, m_cable.end(0)}) {}

    void SetUp() override
    {
        const std::optional<std::string> line = m_server.readLine(START_MS);
        if (line == "serving") return;
        m_server.waitForEnd(END_MS);
        FAIL() << "the peer does not start: " << m_server.errors();
    }

    HostRun host(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.end(), {"--link", "serial:" + m_cable.end(1)});
        ChildProcess program(KAKB_HOST_FILE, arguments);
        HostRun run;
        run.status = program.waitForEnd(END_MS);
        run.output = program.output();
        run.errors = program.errors();
        return run;
    }

    /// The peer's values at its end: lines "hr NUMBER VALUE" and "co NUMBER VALUE".
    Lines memory()
    {
        m_server.closeInput();
        EXPECT_EQ(0, m_server.waitForEnd(END_MS)) << m_server.errors();
        return linesOf(m_server.output());
    }

    std::string recipe(const char* rows)
    {
        const QString name = m_folder.filePath(QLatin1String("recipe.csv"));
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("name,station,area,address,type,value\n");
        file.write(rows);
        return name.toStdString();
    }

private:
    QTemporaryDir m_folder;
    TerminalCable m_cable;
    ChildProcess m_server;
};

bool has(const Lines& lines, const std::string& line)
{
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

} // namespace

TEST_F(Peer, ReadsWordsOfEveryArea)
{
    // Registers that pymodbusServer.py sets at its start: 3050 is MW100, 20 is QW40.
    const HostRun run = host({"read", "MW100", "MW102", "QW40", "IW0", "IW2"});
    EXPECT_EQ(DONE, run.status) << run.errors;
    EXPECT_EQ("MW100 = 1234\nMW102 = 65534\nQW40 = 65535\nIW0 = 4711\nIW2 = 32769\n", run.output);
}

TEST_F(Peer, ReadsBitsFromTheirRegisters)
{
    // Input register 1 is 0x8001, 5 is 0x0204; holding register 4 is 0x8008, 3050 is 1234 = 0x04D2.
    const HostRun run = host({"read", "IX2.0", "IX3.7", "IX2.1", "IX10.2", "IX11.1", "QX8.3",
                              "QX9.7", "QX8.4", "MX100.1", "MX101.2", "MX100.0"});
    EXPECT_EQ(DONE, run.status) << run.errors;
    EXPECT_EQ("IX2.0 = 1\nIX3.7 = 1\nIX2.1 = 0\nIX10.2 = 1\nIX11.1 = 1\nQX8.3 = 1\nQX9.7 = 1\n"
              "QX8.4 = 0\nMX100.1 = 1\nMX101.2 = 1\nMX100.0 = 0\n",
              run.output);
}

TEST_F(Peer, TakesSingleWritesOfRegistersAndCoils)
{
    const HostRun run = host({"write", "MW200=4321", "QW60=1", "QX1.2=1", "MX12.3=1"});
    EXPECT_EQ(DONE, run.status) << run.errors;
    EXPECT_EQ("MW200 = 4321 confirmed\nQW60 = 1 confirmed\nQX1.2 = 1 confirmed\n"
              "MX12.3 = 1 confirmed\n",
              run.output);
    const Lines left = memory();
    EXPECT_TRUE(has(left, "hr 3100 4321"));
    EXPECT_TRUE(has(left, "hr 30 1"));
    EXPECT_TRUE(has(left, "co 10 1"));
    EXPECT_TRUE(has(left, "co 3099 1"));
}

TEST_F(Peer, TakesMultipleWritesOfRegistersAndCoils)
{
    const std::string file = recipe("a,1,MW,300,uint16,7\n"
                                    "b,1,MW,302,uint32,305419896\n"
                                    "c,1,QX,2.0,bool,1\n"
                                    "d,1,QX,2.1,bool,0\n"
                                    "e,1,QX,2.2,bool,1\n");
    const HostRun run = host({"recipe", "download", file, "--trace"});
    EXPECT_EQ(DONE, run.status) << run.errors;
    // Function 16 for three registers from 3150, function 15 for three coils from 16.
    EXPECT_NE(std::string::npos, run.errors.find("01 10 0C 4E 00 03 06")) << run.errors;
    EXPECT_NE(std::string::npos, run.errors.find("01 0F 00 10 00 03 01 05")) << run.errors;
    const Lines left = memory();
    EXPECT_TRUE(has(left, "hr 3150 7"));
    EXPECT_TRUE(has(left, "hr 3151 22136")); // 305419896 is 0x12345678, the low word first
    EXPECT_TRUE(has(left, "hr 3152 4660"));
    EXPECT_TRUE(has(left, "co 16 1"));
    EXPECT_FALSE(has(left, "co 17 1"));
    EXPECT_TRUE(has(left, "co 18 1"));
}

TEST_F(Peer, VerifiesARecipe)
{
    const std::string file = recipe("a,1,MW,300,float32:high,-12.5\n"
                                    "b,1,MW,304,int32,-250000\n"
                                    "c,1,QW,80,int16,-300\n");
    const HostRun run = host({"recipe", "download", file, "--verify"});
    EXPECT_EQ(DONE, run.status) << run.errors;
    EXPECT_EQ("downloaded 3 values, verified\n", run.output);
}

TEST_F(Peer, DoesNotAnswerForAnotherStation)
{
    const HostRun run = host({"read", "2:MW100", "--timeout-ms", "100", "--attempts", "2"});
    EXPECT_EQ(TIME_OUT, run.status);
    EXPECT_EQ("", run.output);
    EXPECT_NE(std::string::npos, run.errors.find("station 2 does not answer")) << run.errors;
}
