#include "plant/linkCommands.h"

#include "machine/machineTest.h"

// Each command has one end, told where it was asked for.

namespace {

const char* const FROM = "mqtt://10.0.0.1:1883 kakb/hall/plc/MW100/set";

} // namespace

class LinkCommandsTest : public MachineTest
{
protected:
    LinkCommandsTest() : links(surroundings)
    {
        makeCommands();
    }

    void makeCommands()
    {
        commands = std::make_unique<LinkCommands>(links, areWritesAllowed, [this] {
            ++wakes;
            news.tell();
        });
    }

    /// A link "plc" with the tags MW100, MX400.3 and MW200, all good; MW300 is read-only.
    void openPlc()
    {
        std::vector<Tag> all = tags({"MW100", "MX400.3", "MW200:float32:high", "MW300"});
        for (Tag& tag : all)
            tag.access = tag.address == QLatin1String("300") ? Tag::READ_ONLY : Tag::READ_WRITE;
        links.apply({config(plc.link(), all)});
        ASSERT_TRUE(news.await([&] { return areAllGood(*links.find(QLatin1String("plc"))); }));
    }

    /// Writes; the end comes into `ends`.
    void write(const char* tag, const MetricValue& value, const char* link = "plc")
    {
        commands->write(QLatin1String(link), QLatin1String(tag), value, QLatin1String(FROM),
                        [this](const WriteEnd& end) { ends.push_back(end); });
    }

    bool endsCome(size_t number)
    {
        return news.await([&] {
            commands->turn();
            return ends.size() >= number;
        });
    }

    /// "confirmed", or "refused: reason", of the only end since the last call.
    std::string written(const char* tag, const MetricValue& value, const char* link = "plc")
    {
        ends.clear();
        write(tag, value, link);
        EXPECT_TRUE(ends.empty()) << "told within write()";
        EXPECT_TRUE(endsCome(1));
        EXPECT_EQ(1u, ends.size());
        return ends.empty() ? "no end" : summaryOf(ends.front());
    }

    ControlledPlc plc;
    StationLinks links;
    std::atomic<bool> areWritesAllowed{true};
    std::atomic<int> wakes{0};
    std::vector<WriteEnd> ends;
    std::unique_ptr<LinkCommands> commands;
};

TEST_F(LinkCommandsTest, AreConfirmedByThePlc)
{
    openPlc();
    EXPECT_EQ("confirmed", written("MW100", qint64(1234)));
    EXPECT_EQ("ok 1234", plc.command("get MW100"));
    EXPECT_EQ("confirmed", written("MX400.3", true));
    EXPECT_EQ("ok 1", plc.command("get MX400.3"));
    EXPECT_EQ("confirmed", written("MW200:float32:high", 21.5f));
    EXPECT_EQ("ok 16812", plc.command("get MW200")); // 21.5 is 0x41AC0000
    EXPECT_NE(0u, ends.front().id);
}

TEST_F(LinkCommandsTest, NeedTheConsentOfTheStationAndOfTheTag)
{
    openPlc();
    EXPECT_EQ("refused: tag \"MW300\" is read-only", written("MW300", qint64(1)));
    areWritesAllowed = false;
    EXPECT_EQ("refused: this station writes nothing: it runs without --allow-writes",
              written("MW100", qint64(1)));
    areWritesAllowed = true;
    EXPECT_EQ("confirmed", written("MW100", qint64(1)));
    EXPECT_EQ("ok 0", plc.command("get MW300"));
}

TEST_F(LinkCommandsTest, ThatDoNotFitAreRefusedWithWhatTheTagHolds)
{
    openPlc();
    EXPECT_EQ("refused: 65536 does not fit uint16: 0 to 65535", written("MW100", qint64(65536)));
    EXPECT_EQ(QByteArray("\0\0", 2), ends.front().held.bytes);
    EXPECT_EQ("refused: 5.5 does not fit uint16: 0 to 65535", written("MW100", 5.5f));
    EXPECT_EQ("refused: true does not fit uint16: 0 to 65535", written("MW100", true));
    EXPECT_EQ("refused: a text does not fit uint16: 0 to 65535",
              written("MW100", QString(QLatin1String("5"))));
    EXPECT_EQ("refused: null does not fit bool: 0, 1, true or false",
              written("MX400.3", std::monostate()));
    const float infinity = std::numeric_limits<float>::infinity();
    const std::string notReal = " does not fit float32:high: -3.4028235e+38 to 3.4028235e+38";
    EXPECT_EQ("refused: -inf" + notReal, written("MW200:float32:high", -infinity));
    EXPECT_EQ("refused: nan" + notReal,
              written("MW200:float32:high", std::numeric_limits<float>::quiet_NaN()));
}

TEST_F(LinkCommandsTest, KnowNoOtherLinkAndTag)
{
    openPlc();
    EXPECT_EQ("refused: there is no link \"press\"", written("MW100", qint64(1), "press"));
    EXPECT_EQ("refused: link \"plc\" has no tag \"MW999\"", written("MW999", qint64(1)));
}

TEST_F(LinkCommandsTest, HaveALineEachInTheAudit)
{
    openPlc();
    testing::internal::CaptureStderr();
    written("MW100", qint64(7));
    written("MW300", qint64(7));
    commands->refused(QLatin1String("x\ny"), QLatin1String("it is not JSON"), QLatin1String(FROM));
    const std::string record = testing::internal::GetCapturedStderr();
    const std::string from = std::string(" from \"") + FROM + "\": ";
    for (const char* const line :
         {"write 1 of \"plc\" \"MW100\" = 7: confirmed, it holds 7\n",
          "write 2 of \"plc\" \"MW300\": refused: tag \"MW300\" is read-only\n",
          "command \"x?y\": refused: it is not JSON\n"})
        EXPECT_NE(std::string::npos, record.find(from + line)) << record;
    EXPECT_EQ(3, std::count(record.begin(), record.end(), '\n'));
}

TEST_F(LinkCommandsTest, WakeTheThreadThatTellsTheirEnds)
{
    openPlc();
    const int before = wakes;
    write("MW100", qint64(7));
    EXPECT_TRUE(news.await([&] { return wakes > before; }));
    EXPECT_TRUE(ends.empty());
    commands->turn();
    EXPECT_EQ(1u, ends.size());
    commands->turn();
    EXPECT_EQ(1u, ends.size());
}

TEST_F(LinkCommandsTest, EndOnceWhenTheLinkIsTakenOut)
{
    openPlc();
    ASSERT_EQ("ok", plc.command("stall 20"));
    for (const char* const tag : {"MW100", "MX400.3", "MW200:float32:high"})
        write(tag, qint64(1));
    links.apply({});
    EXPECT_TRUE(endsCome(3));
    EXPECT_EQ(3u, ends.size());
    for (const WriteEnd& end : ends)
        EXPECT_EQ(WriteEnd::FAILED, end.outcome);
    EXPECT_EQ("refused: there is no link \"plc\"", written("MW100", qint64(2)));
}

TEST_F(LinkCommandsTest, EndOnceWhenThePlcIsGone)
{
    openPlc();
    ASSERT_EQ("ok", plc.command("stall 20"));
    write("MW100", qint64(1));
    write("MX400.3", true);
    plc.end();
    EXPECT_TRUE(endsCome(2));
    links.stop(QLatin1String("the station stopped"));
    commands->turn();
    EXPECT_EQ(2u, ends.size());
    EXPECT_EQ("failed: not sent: the station stopped", written("MW100", qint64(2)));
}

TEST_F(LinkCommandsTest, WhoseOwnerIsGoneAreToldToNobody)
{
    openPlc();
    ASSERT_EQ("ok", plc.command("stall 20"));
    write("MW100", qint64(1));
    commands.reset();
    const int before = wakes;
    links.stop(QLatin1String("the station stopped"));
    EXPECT_EQ(before, wakes);
    EXPECT_TRUE(ends.empty());
}
