#include "pollingHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>

// A network link whose peer is a gateway. The gateway passes the requests on over a serial line,
// one after the other. The host does not know the speed of that line.

namespace {

enum {
    EXCHANGES = 10000,
    ALL = EXCHANGES - 10, ///< without the first exchanges, from which the machine learns
    MOST = EXCHANGES * 9 / 10,
    MS = 1000,
    TIME_OUT = 500 * MS,
    TURNAROUND = 5 * MS,
    DOWN_TIME = 50 * MS,
    CHARACTER_BITS = 10,
    PIECE = 16 ///< bytes in one piece from a peer that does not wait for whole frames
};

struct GatewayCase
{
    const char* name;
    int baud;
    std::vector<QByteArray> blocks;
    int attempts;
    int leastAnswered;
    bool inPieces = false;
    double lost = 0;        ///< share of requests that are lost, and of answers
    int reconnectEvery = 0; ///< number of requests between two reconnects; 0: no reconnect
};

void PrintTo(const GatewayCase& one, std::ostream* out)
{
    *out << one.name;
}

const std::vector<QByteArray> LONG_ONES = {readOf(3000, 125), readOf(3125, 125)};
const std::vector<QByteArray> MIXED = {readOf(3000, 125), readOf(3125, 60), readOf(3200, 125),
                                       readOf(3400, 2),   readOf(3402, 60), readOf(3500, 2)};

/// The gateway at the other end of the link, and the serial line behind it.
class Gateway : public OrderlyPeer
{
public:
    explicit Gateway(const GatewayCase& made) : OrderlyPeer(Habits(), 4), m_case(made) {}

    void hear(const QByteArray& request, qint64 at, qint64) override
    {
        if (drawn() < m_case.lost) return;
        const QByteArray answer = answerTo(request);
        const qint64 begins =
            std::max(at, m_lineFreeAt) + wireTime(int(request.size())) + TURNAROUND;
        m_lineFreeAt = begins + wireTime(int(answer.size()));
        if (drawn() < m_case.lost) return;
        const int size = int(answer.size());
        const int piece = m_case.inPieces ? int(PIECE) : size;
        for (int sent = 0; sent < size; sent += piece)
            come(begins + wireTime(std::min(sent + piece, size)), answer.mid(sent, piece));
    }

private:
    qint64 wireTime(int bytes) const
    {
        return qint64(bytes) * CHARACTER_BITS * 1000 * MS / m_case.baud;
    }

    const GatewayCase& m_case;
    qint64 m_lineFreeAt = 0;
};

ExchangeMachine::Settings settings()
{
    ExchangeMachine::Settings made;
    made.answer = TIME_OUT;
    return made;
}

class ExchangeMachineGatewayTest : public testing::TestWithParam<GatewayCase>
{
};

} // namespace

TEST_P(ExchangeMachineGatewayTest, AnswersEachRequestWithItsOwnBlock)
{
    Gateway gateway(GetParam());
    PollingHost host(gateway, LineTiming::network(), settings());
    host.poll(GetParam().blocks);
    host.tryEach(GetParam().attempts);
    const int stretch = GetParam().reconnectEvery == 0 ? int(EXCHANGES) : GetParam().reconnectEvery;
    for (int done = 0; done < EXCHANGES; done += stretch) {
        host.run(stretch);
        if (GetParam().reconnectEvery != 0) host.reconnect(DOWN_TIME);
    }
    EXPECT_EQ(0, host.figures.wrong);
    EXPECT_EQ(0, host.figures.wronglyRefused);
    EXPECT_GE(host.figures.answered, GetParam().leastAnswered);
}

INSTANTIATE_TEST_SUITE_P(
    Over, ExchangeMachineGatewayTest,
    testing::Values(GatewayCase{"9600Baud", 9600, LONG_ONES, 3, ALL},
                    GatewayCase{"2400Baud", 2400, LONG_ONES, 3, ALL},
                    GatewayCase{"1200Baud", 1200, LONG_ONES, 3, ALL},
                    GatewayCase{"2400BaudWithShortBlocks", 2400, MIXED, 3, ALL},
                    GatewayCase{"1200BaudWithShortBlocks", 1200, MIXED, 3, ALL},
                    GatewayCase{"2400BaudInOneAttempt", 2400, LONG_ONES, 1, ALL},
                    GatewayCase{"1200BaudInOneAttempt", 1200, LONG_ONES, 1, ALL},
                    GatewayCase{"2400BaudInPieces", 2400, LONG_ONES, 3, ALL, true},
                    GatewayCase{"1200BaudInPieces", 1200, MIXED, 3, ALL, true},
                    GatewayCase{"2400BaudWithLosses", 2400, LONG_ONES, 3, MOST, false, 0.025},
                    GatewayCase{"2400BaudOfAllSorts", 2400, MIXED, 3, MOST, true, 0.025},
                    GatewayCase{"2400BaudReconnected", 2400, LONG_ONES, 3, ALL, false, 0, 7},
                    GatewayCase{"9600BaudReconnected", 9600, LONG_ONES, 3, MOST, false, 0.025, 7}),
    [](const testing::TestParamInfo<GatewayCase>& named) { return std::string(named.param.name); });
