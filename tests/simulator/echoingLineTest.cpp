#include "echoingLine.h"

#include "hexText.h"

#include <gtest/gtest.h>

#include <deque>

namespace {

/// A line in memory: delivers the chunks in `coming` and records each call.
class HostSide : public LineEnd
{
public:
    std::string address() const override
    {
        return "here";
    }
    int descriptor() const override
    {
        return 11;
    }
    int listener() const override
    {
        return 12;
    }
    void acceptHost() override
    {
        calls.push_back("accept");
    }
    int departures() const override
    {
        return 13;
    }
    void hostLeft() override
    {
        calls.push_back("left");
    }
    Bytes receive() override
    {
        if (coming.empty()) return {};
        const Bytes next = coming.front();
        coming.pop_front();
        return next;
    }
    void send(const Bytes& bytes) override
    {
        calls.push_back(hexOf(bytes));
    }

    std::deque<Bytes> coming;
    std::vector<std::string> calls;
};

using Texts = std::vector<std::string>;

} // namespace

TEST(EchoingLine, HostBytesAreReturnedUnchanged)
{
    HostSide host;
    EchoingLine line(host);
    host.coming = {bytesOf("FF 00 55"), bytesOf("01")};
    EXPECT_EQ(bytesOf("FF 00 55"), line.receive());
    EXPECT_EQ(bytesOf("01"), line.receive());
    line.send(bytesOf("02 03"));
    EXPECT_EQ((Texts{"FF 00 55", "01", "02 03"}), host.calls);
    EXPECT_EQ(4, line.echoedBytes());
}

TEST(EchoingLine, NothingIsReturnedWhenNothingCame)
{
    HostSide host;
    EchoingLine line(host);
    EXPECT_TRUE(line.receive().empty());
    EXPECT_TRUE(host.calls.empty());
    EXPECT_EQ(0, line.echoedBytes());
}

TEST(EchoingLine, OtherCallsGoToTheLineItself)
{
    HostSide host;
    EchoingLine line(host);
    EXPECT_EQ("here", line.address());
    EXPECT_EQ(11, line.descriptor());
    EXPECT_EQ(12, line.listener());
    EXPECT_EQ(13, line.departures());
    line.acceptHost();
    line.hostLeft();
    EXPECT_EQ((Texts{"accept", "left"}), host.calls);
}
