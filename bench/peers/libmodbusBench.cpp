// libmodbus' RTU client on one end of a socket pair. The replies are in the pair before the clock
// runs, so that the client never waits and no other thread is measured.

#include "benchHost.h"

#include <benchmark/benchmark.h>

#include <modbus/modbus.h>

#include <cstdint>

#include <sys/socket.h>
#include <unistd.h>

namespace {

enum { BATCH = 64, BYTES_OF_REQUEST = 8, BAUD = 38400 };

/// The other end of the client's line.
class CannedPeer
{
public:
    CannedPeer()
    {
        if (socketpair(AF_UNIX, SOCK_STREAM, 0, m_ends) != 0) m_ends[0] = m_ends[1] = -1;
    }
    ~CannedPeer()
    {
        close(m_ends[1]);
    }
    int clientEnd() const
    {
        return m_ends[0];
    }
    bool putReplies(const QByteArray& reply)
    {
        bool all = true;
        for (int i = 0; i < BATCH; ++i)
            all = write(m_ends[1], reply.constData(), size_t(reply.size())) == reply.size() && all;
        return all;
    }
    bool takeRequests()
    {
        char requests[BATCH * BYTES_OF_REQUEST];
        return recv(m_ends[1], requests, sizeof requests, MSG_WAITALL) == sizeof requests;
    }

private:
    int m_ends[2];
};

void libmodbusRead(benchmark::State& state)
{
    const int words = int(state.range(0));
    CannedPeer peer;
    modbus_t* context = modbus_new_rtu("/dev/null", BAUD, 'N', 8, 1);
    modbus_set_slave(context, STATION);
    modbus_set_socket(context, peer.clientEnd());
    const QByteArray reply = readReply(words, 0);
    uint16_t values[MOST_WORDS];
    bool right = true;
    while (state.KeepRunningBatch(BATCH)) {
        state.PauseTiming();
        right = peer.putReplies(reply) && right;
        state.ResumeTiming();
        for (int i = 0; i < BATCH; ++i)
            right = modbus_read_registers(context, FIRST_WORD, words, values) == words && right;
        state.PauseTiming();
        right = peer.takeRequests() && right;
        state.ResumeTiming();
    }
    if (!right) state.SkipWithError("exchange failed");
    close(peer.clientEnd());
    modbus_free(context);
}

BENCHMARK(libmodbusRead)->Arg(1)->Arg(125);

} // namespace
