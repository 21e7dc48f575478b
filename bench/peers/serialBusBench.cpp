// Qt SerialBus through its public classes: a request's PDU is built, a reply's PDU is parsed into a
// data unit. Station, checksum, timers and the port stay out, so it does less than an exchange.

#include "benchHost.h"

#include <benchmark/benchmark.h>

#include <QModbusClient>
#include <QModbusDataUnit>
#include <QModbusRequest>
#include <QModbusResponse>

#include <QDataStream>

namespace {

enum { PDU_START = 1, CHECKSUM_LENGTH = 2 };

/// A client only for what it makes of replies.
class Client : public QModbusClient
{
public:
    using QModbusClient::processResponse;

private:
    bool open() override
    {
        return false;
    }
    void close() override {}
};

void serialBusRead(benchmark::State& state)
{
    const quint16 words = quint16(state.range(0));
    const QByteArray frame = readReply(words, 0);
    const QByteArray pdu = frame.mid(PDU_START, int(frame.size()) - PDU_START - CHECKSUM_LENGTH);
    Client client;
    for (auto _ : state) {
        QByteArray sent;
        QDataStream out(&sent, QIODevice::WriteOnly);
        out << QModbusRequest(QModbusRequest::ReadHoldingRegisters, quint16(FIRST_WORD), words);
        QDataStream in(pdu);
        QModbusResponse response;
        in >> response;
        QModbusDataUnit unit(QModbusDataUnit::HoldingRegisters, FIRST_WORD, words);
        if (!client.processResponse(response, &unit) || unit.valueCount() != words)
            return state.SkipWithError("reply not parsed");
    }
}

BENCHMARK(serialBusRead)->Arg(1)->Arg(125);

} // namespace
