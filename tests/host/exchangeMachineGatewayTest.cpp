#include "pollingDriver.h"

#include "exchange/timeUnits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <random>

// A network link whose peer passes the requests on over a serial line that the host knows nothing
// of: one after the other, each for as long as that line takes.

namespace {

enum {
    EXCHANGES = 10000,
    ALL_ACCEPTED = EXCHANGES - 10, ///< but for those that the machine learns from
    MOST = EXCHANGES * 9 / 10,
    TIME_OUT = 500 * MILLISECOND,
    TURNAROUND = 5 * MILLISECOND,
    DOWN_TIME = 50 * MILLISECOND,
    CHARACTER_BITS = 10,
    PIECE = 16 ///< bytes that are passed on together, where the peer waits for no whole frame
};

struct GatewayCase
{
    const char* name;
    int baud;
    std::vector<PolledBlock> blocks;
    int attempts;
    int leastAccepted;
    bool inPieces = false;
    int lostOfHundred = 0;  ///< requests and answers, half of each
    int reconnectEvery = 0; ///< so many requests
};

void PrintTo(const GatewayCase& one, std::ostream* out)
{
    *out << one.name;
}

const std::vector<PolledBlock> TWO_LONG = {{3000, 125}, {3125, 125}};
const std::vector<PolledBlock> MIXED = {{3000, 125}, {3125, 60}, {3200, 125},
                                        {3400, 2},   {3402, 60}, {3500, 2}};

/// The other end of the link, and the line behind it.
class Gateway
{
public:
    Gateway(PollingWorld& world, const GatewayCase& made) : m_world(world), m_case(made) {}

    void take(const QByteArray& request)
    {
        if (isLost()) return;
        const QByteArray answer = answerTo(request);
        const qint64 start =
            std::max(m_world.now, m_lineFreeAt) + wireTime(int(request.size())) + TURNAROUND;
        m_lineFreeAt = start + wireTime(int(answer.size()));
        if (!isLost()) passOn(answer, start);
    }

private:
    bool isLost()
    {
        return int(m_random() % 200) < m_case.lostOfHundred;
    }

    qint64 wireTime(int bytes) const
    {
        return qint64(bytes) * CHARACTER_BITS * SECOND / m_case.baud;
    }

    void passOn(const QByteArray& answer, qint64 start)
    {
        const int size = int(answer.size());
        const int piece = m_case.inPieces ? int(PIECE) : size;
        for (int at = 0; at < size; at += piece)
            m_world.come(start + wireTime(std::min(at + piece, size)), answer.mid(at, piece));
    }

    PollingWorld& m_world;
    const GatewayCase& m_case;
    qint64 m_lineFreeAt = 0;
    std::mt19937 m_random{4};
};

class ExchangeMachineGatewayTest : public testing::TestWithParam<GatewayCase>
{
protected:
    ExchangeMachineGatewayTest() : driver(GetParam().blocks, GetParam().attempts) {}

    static ExchangeMachine::Times times()
    {
        ExchangeMachine::Times made;
        made.answer = TIME_OUT;
        return made;
    }

    PollingDriver driver;
    PollingWorld world{driver, LineTiming::network(), times()};
};

} // namespace

TEST_P(ExchangeMachineGatewayTest, ShowsNoBlocksWordsAsAnothersAndIsAskedOnce)
{
    Gateway gateway(world, GetParam());
    world.run(EXCHANGES, [&](const QByteArray& request, qint64) {
        gateway.take(request);
        const int every = GetParam().reconnectEvery;
        if (every != 0 && world.sent % every == 0) world.reconnect(DOWN_TIME);
    });
    EXPECT_EQ(0, driver.wrong);
    EXPECT_GE(driver.accepted, GetParam().leastAccepted);
}

INSTANTIATE_TEST_SUITE_P(
    Over, ExchangeMachineGatewayTest,
    testing::Values(GatewayCase{"9600Baud", 9600, TWO_LONG, 3, ALL_ACCEPTED},
                    GatewayCase{"2400Baud", 2400, TWO_LONG, 3, ALL_ACCEPTED},
                    GatewayCase{"1200Baud", 1200, TWO_LONG, 3, ALL_ACCEPTED},
                    GatewayCase{"2400BaudWithShortBlocks", 2400, MIXED, 3, ALL_ACCEPTED},
                    GatewayCase{"1200BaudWithShortBlocks", 1200, MIXED, 3, ALL_ACCEPTED},
                    GatewayCase{"2400BaudInOneAttempt", 2400, TWO_LONG, 1, ALL_ACCEPTED},
                    GatewayCase{"1200BaudInOneAttempt", 1200, TWO_LONG, 1, ALL_ACCEPTED},
                    GatewayCase{"2400BaudInPieces", 2400, TWO_LONG, 3, ALL_ACCEPTED, true},
                    GatewayCase{"1200BaudInPieces", 1200, MIXED, 3, ALL_ACCEPTED, true},
                    GatewayCase{"2400BaudWithLosses", 2400, TWO_LONG, 3, MOST, false, 5},
                    GatewayCase{"2400BaudOfAllSorts", 2400, MIXED, 3, MOST, true, 5},
                    GatewayCase{"2400BaudReconnected", 2400, TWO_LONG, 3, ALL_ACCEPTED, false, 0,
                                7},
                    GatewayCase{"9600BaudReconnected", 9600, TWO_LONG, 3, MOST, false, 5, 7}),
    [](const testing::TestParamInfo<GatewayCase>& named) { return std::string(named.param.name); });
