#include "controlCommands.h"

#include "handledRequests.h"

namespace {

// pymodbus 3.0's RTU framer
const char* const READ_MW100 = "01 03 0B EA 00 01 A7 DA";

class Controlled : public HandledRequests
{
protected:
    std::string answer(const std::string& line, std::int64_t at = 0)
    {
        return m_commands.answer(line, at);
    }
    std::string reply(const char* request, std::int64_t at)
    {
        const std::vector<OutgoingPiece> pieces = handle(request, at);
        return pieces.empty() ? "" : hexOf(pieces[0].bytes);
    }

    ControlCommands m_commands{m_stations, handler()};
};

} // namespace

TEST_F(Controlled, SetValueIsGotAndRead)
{
    EXPECT_EQ("ok", answer("set MW100=4660"));
    EXPECT_EQ("ok 4660", answer("get MW100"));
    EXPECT_EQ("ok 1", answer("  get\tMX100.2 \r")); // 4660 is 0x1234
    EXPECT_EQ("ok 0", answer("get 2:MW100"));
    EXPECT_EQ("01 03 02 12 34 B5 33", reply(READ_MW100, 0));
    EXPECT_EQ("ok", answer("set 2:IX8.1=1"));
    EXPECT_EQ("ok 2", answer("get 2:IW8"));
}

TEST_F(Controlled, RefusalHoldsUntilItIsTakenBack)
{
    EXPECT_EQ("ok", answer("refuse MW100..MW102:4"));
    EXPECT_EQ("01 83 04 40 F3", reply(READ_MW100, 0));
    EXPECT_EQ("ok", answer("refuse none"));
    EXPECT_EQ("01 03 02 00 00 B8 44", reply(READ_MW100, 0));
}

TEST_F(Controlled, RefusalsAreLimitedInNumber)
{
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ("ok", answer("refuse MW100"));
    EXPECT_EQ("error there are too many refusals", answer("refuse MW100"));
}

TEST_F(Controlled, StallHoldsRequestsUntilItsEnd)
{
    EXPECT_EQ("ok", answer("stall 2.5", 1000 * MS));
    EXPECT_EQ("", reply(WRITE, 1500 * MS));
    EXPECT_EQ(0, marker());
    ASSERT_TRUE(handler().nextServiceAt());
    EXPECT_EQ(3500 * MS, *handler().nextServiceAt());
    EXPECT_EQ("ok", answer("stall 0", 2000 * MS));
    EXPECT_EQ(2000 * MS, *handler().nextServiceAt());
    EXPECT_EQ(1u, handler().serveHeld(2000 * MS).size());
    EXPECT_EQ(1234, marker());
    EXPECT_EQ(1, handler().counts().stalled);
}

TEST_F(Controlled, StationIsSilentUntilItIsSwitchedOff)
{
    EXPECT_EQ("ok", answer("silent 1 on"));
    EXPECT_EQ("", reply(WRITE, 0));
    EXPECT_EQ("", reply(BROADCAST, 0));
    EXPECT_EQ(0, marker());
    EXPECT_EQ(0, m_stations.find(1)->holdingRegister(200));
    EXPECT_EQ(77, m_stations.find(2)->holdingRegister(200));
    EXPECT_EQ("ok", answer("silent 1 off"));
    EXPECT_EQ(WRITE, reply(WRITE, 0));
    EXPECT_EQ(1, handler().counts().silent);
}

TEST_F(Controlled, SilenceByTheOptionCanBeSwitchedOff)
{
    m_faults.silentStations = {{1, 1.0}};
    RequestHandler silent(m_stations, LinePacing(m_line), m_faults, 1);
    EXPECT_TRUE(silent.handle({bytesOf(WRITE), 0, 0}).empty());
    ControlCommands(m_stations, silent).answer("silent 1 off", 0);
    EXPECT_EQ(1u, silent.handle({bytesOf(WRITE), 0, 0}).size());
}

TEST_F(Controlled, SilenceByOrderOutlastsTheFaultExchanges)
{
    m_faults.exchanges = 1;
    RequestHandler limited(m_stations, LinePacing(m_line), m_faults, 1);
    ControlCommands(m_stations, limited).answer("silent 1 on", 0);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(limited.handle({bytesOf(WRITE), 0, 0}).empty());
}

TEST_F(Controlled, QuitEndsTheRun)
{
    EXPECT_FALSE(m_commands.isQuit());
    EXPECT_EQ("ok", answer("quit"));
    EXPECT_TRUE(m_commands.isQuit());
}

TEST_F(Controlled, WrongLineIsAnsweredByASentenceAndChangesNothing)
{
    const std::string others = "error the commands are ";
    for (const char* line : {"", "set", "get", "set MW100 = 5", "get MW100 MW102", "refuse",
                             "stall", "silent 1", "quit now", "QUIT", "hello"})
        EXPECT_EQ(0u, answer(line).find(others)) << line;
    EXPECT_EQ("error 'MW100' is not ADDRESS=VALUE", answer("set MW100"));
    EXPECT_EQ("error there is no station 3", answer("set 3:MW100=1"));
    EXPECT_EQ("error there is no station 3", answer("get 3:MW100"));
    EXPECT_EQ("error there is no station 3", answer("refuse 3:MW100"));
    EXPECT_EQ("error there is no station 3", answer("silent 3 on"));
    EXPECT_EQ("error station '0' is not in 1 to 247", answer("silent 0 on"));
    EXPECT_EQ("error 'maybe' is neither on nor off", answer("silent 1 maybe"));
    EXPECT_EQ("error exception code '256' is not in 1 to 255", answer("refuse MW100:256"));
    for (const char* seconds : {"-1", "3600.1", "nan", "1s", "0x1"})
        EXPECT_EQ(std::string("error '") + seconds + "' is not a number of seconds from 0 to 3600",
                  answer(std::string("stall ") + seconds));
    EXPECT_FALSE(m_commands.isQuit());
    EXPECT_EQ(WRITE, reply(WRITE, 0));
}
