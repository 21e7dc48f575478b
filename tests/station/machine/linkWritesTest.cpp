#include "machine/machineTest.h"

// Each write has one outcome, which is true.

namespace {

enum { WORD, BIT, REAL, LIMITED };

} // namespace

class LinkWritesTest : public MachineTest
{
protected:
    LinkConfig plcConfig()
    {
        return config(plc.link(), tags({"MW100", "MX400.3", "MW200:float32:high", "MW300"}));
    }

    /// "ok 1234": what the PLC holds.
    std::string inPlc(const char* place)
    {
        return plc.command((std::string("get ") + place).c_str());
    }

    ControlledPlc plc;
};

TEST_F(LinkWritesTest, AreConfirmedByThePlc)
{
    const auto link = liveLink(plcConfig());
    const std::pair<int, const char*> values[] = {{WORD, "1234"}, {BIT, "1"}, {REAL, "21.5"}};
    for (const auto& [tag, value] : values) {
        const WriteEnd end = write(*link, tag, value);
        EXPECT_EQ("confirmed", summaryOf(end));
        EXPECT_EQ(bytesOf(link->tags()[size_t(tag)], value), end.held.bytes) << tag;
        EXPECT_EQ(GOOD, end.held.quality);
    }
    EXPECT_EQ("ok 1234", inPlc("MW100"));
    EXPECT_EQ("ok 1", inPlc("MX400.3"));
    EXPECT_EQ("ok 16812", inPlc("MW200")); // 21.5 is 0x41AC0000
    EXPECT_EQ("ok 0", inPlc("MW202"));
}

TEST_F(LinkWritesTest, HaveNumbersOfTheWholeStation)
{
    const auto first = liveLink(plcConfig());
    const quint64 id = write(*first, WORD, "1").id;
    const auto second = link(config(QLatin1String("tcp:127.0.0.1,1"), tags({"MW100"})));
    EXPECT_EQ(id + 1, write(*second, WORD, "1").id);
    EXPECT_EQ(id + 2, write(*first, WORD, "2").id);
}

TEST_F(LinkWritesTest, ThatThePlcRefusesAreRefusedWithTheReason)
{
    const auto link = liveLink(plcConfig());
    ASSERT_EQ("ok", plc.command("set MW300=7"));
    ASSERT_EQ("ok", plc.command("refuse MW300..MW300:3:write"));
    ASSERT_TRUE(news.await([&] { return shown(*link, LIMITED) == "7"; }));
    const WriteEnd end = write(*link, LIMITED, "9");
    EXPECT_EQ("refused: refused by the PLC: illegal value (exception 3)", summaryOf(end));
    EXPECT_EQ("7", tagValueText(link->tags()[LIMITED], end.held.bytes).toStdString());
}

TEST_F(LinkWritesTest, ThatThePlcMayHaveExecutedAreNotRefused)
{
    const auto link = liveLink(plcConfig());
    ASSERT_EQ("ok", plc.command("refuse MW300..MW300:4:write"));
    EXPECT_EQ("failed: refused by the PLC: device failure (exception 4); the PLC may have executed "
              "it",
              summaryOf(write(*link, LIMITED, "9")));
}

TEST_F(LinkWritesTest, ToAStationThatFallsSilentSayWhetherTheyWentOut)
{
    const auto link = liveLink(plcConfig());
    ASSERT_EQ("ok", plc.command("silent 1 on"));
    const WriteEnd end = write(*link, WORD, "5");
    EXPECT_EQ(WriteEnd::FAILED, end.outcome);
    const bool wentOut = end.reason.contains(QLatin1String("the PLC may have executed it"));
    const bool didNot = end.reason.startsWith(QLatin1String("not sent: "));
    EXPECT_TRUE(wentOut != didNot) << end.reason.toStdString();
}

// While the PLC stands still, at most one write of each tag is on its way. It may be any of those
// that had come by then, but never the last.
TEST_F(LinkWritesTest, ThatWaitAreReplacedByNewerOnes)
{
    LinkConfig patient = plcConfig();
    patient.timeoutMs = 10000;
    const auto link = liveLink(patient);
    ASSERT_EQ("ok", plc.command("stall 3600"));
    std::map<int, std::vector<std::future<WriteEnd>>> ends;
    for (const int tag : {int(WORD), int(BIT), int(REAL)}) {
        for (const char* const value : {"1", "0", "1", "0", "1"})
            ends[tag].push_back(startWrite(*link, tag, value));
    }
    ASSERT_EQ("ok", plc.command("stall 0")); // all of them wait by now
    for (auto& [tag, ofTag] : ends) {
        EXPECT_EQ("confirmed", summaryOf(endOf(std::move(ofTag.back())))) << tag;
        ofTag.pop_back();
        int replaced = 0;
        for (std::future<WriteEnd>& end : ofTag) {
            const std::string outcome = summaryOf(endOf(std::move(end)));
            if (outcome == "failed: replaced by a newer write, not sent")
                ++replaced;
            else
                EXPECT_EQ("confirmed", outcome) << tag;
        }
        EXPECT_GE(replaced, 3) << tag;
    }
}

TEST_F(LinkWritesTest, FailUnsentWhileTheLinkIsNotOpen)
{
    const auto waiting = link(plcConfig());
    EXPECT_EQ("failed: not sent: the link is not started", summaryOf(write(*waiting, WORD, "1")));
    const auto unreachable = link(config(QLatin1String("tcp:127.0.0.1,1"), tags({"MW100"})));
    unreachable->start();
    ASSERT_TRUE(news.await([&] { return unreachable->values().state().standing == LINK_LOST; }));
    EXPECT_EQ("failed: not sent: the link is lost: 127.0.0.1, port 1: Connection refused",
              summaryOf(write(*unreachable, WORD, "1")));
}

TEST_F(LinkWritesTest, EndWithTheLoss)
{
    const auto link = liveLink(plcConfig());
    ASSERT_EQ("ok", plc.command("stall 20"));
    std::vector<std::future<WriteEnd>> ends;
    for (const int tag : {int(WORD), int(BIT), int(REAL), int(LIMITED)})
        ends.push_back(startWrite(*link, tag, "1"));
    plc.end();
    for (std::future<WriteEnd>& end : ends) {
        const WriteEnd ended = endOf(std::move(end));
        EXPECT_EQ(WriteEnd::FAILED, ended.outcome);
        EXPECT_FALSE(ended.reason.isEmpty());
    }
}

TEST_F(LinkWritesTest, EndWithTheLinkAndFailBehindIt)
{
    const auto link = liveLink(plcConfig());
    ASSERT_EQ("ok", plc.command("stall 20"));
    std::vector<std::future<WriteEnd>> ends;
    for (const int tag : {int(WORD), int(BIT), int(REAL), int(LIMITED)})
        ends.push_back(startWrite(*link, tag, "1"));
    link->stop(QLatin1String("it was taken out"));
    for (std::future<WriteEnd>& end : ends) {
        ASSERT_EQ(std::future_status::ready, end.wait_for(std::chrono::seconds(0)));
        EXPECT_EQ(WriteEnd::FAILED, end.get().outcome);
    }
    EXPECT_EQ("failed: not sent: it was taken out", summaryOf(write(*link, WORD, "2")));
}

TEST_F(LinkWritesTest, BeyondTheMostThatMayWaitFailUnsent)
{
    const LinkConfig slow = [this] {
        std::vector<Tag> many;
        for (int i = 0; i <= LinkJobs::MOST_WRITES; ++i)
            many.push_back(tag(("MW" + std::to_string(2 * i)).c_str()));
        return config(plc.link(), many);
    }();
    const auto link = liveLink(slow);
    ASSERT_EQ("ok", plc.command("stall 20"));
    std::vector<std::future<WriteEnd>> ends;
    for (int i = 0; i < LinkJobs::MOST_WRITES; ++i)
        ends.push_back(startWrite(*link, i, "1"));
    const WriteEnd last = endOf(startWrite(*link, LinkJobs::MOST_WRITES, "1"));
    EXPECT_EQ("failed: not sent: too many wait on this link already", summaryOf(last));
    link->stop(QLatin1String("stopped"));
    for (std::future<WriteEnd>& end : ends)
        endOf(std::move(end));
    EXPECT_EQ(size_t(LinkJobs::MOST_WRITES) + 1, lines().size());
}
