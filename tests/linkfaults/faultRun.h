#ifndef FAULT_RUN_H
#define FAULT_RUN_H

#include "benchHost.h"
#include "faultyLine.h"
#include "listeningHost.h"
#include "plainHost.h"
#include "plant.h"
#include "randomSource.h"
#include "writeAccounts.h"

#include <ostream>

/// What a run came to.
struct RunFigures
{
    int exchanges = 0;
    int accepted = 0;
    int givenUp = 0;
    int oneShotsRead = 0;
    int oneShotsFailed = 0;
    int downloads = 0;
    int uploads = 0;
    int transfersFailed = 0;
};

/// A panel that polls, writes, reads once and transfers recipes over a faulty line, and an
/// accountant who compares what the driver says with the PLC's memory after every exchange.
class FaultRun
{
public:
    enum HostKind { LISTENING, PLAIN };

    FaultRun(std::uint32_t seed, int retryLimit, HostKind kind = LISTENING);

    /// Traffic and faults for so many exchanges.
    void disturb(int exchanges);

    /// No more traffic and no more faults: until all that is under way has ended.
    void settle();

    /// One request for each polled block.
    void cycle();

    void expectCacheEqualsMemory();
    void expectWritesAccountedFor();

    /// What did not fit, each with the number of its exchange.
    const std::vector<std::string>& problems() const
    {
        return m_problems;
    }

    void print(std::ostream& out) const;

    const RunFigures& figures() const
    {
        return m_figures;
    }

    const WriteAccounts& accounts() const
    {
        return m_accounts;
    }

    const FaultyLine& line() const
    {
        return m_line;
    }

private:
    enum Transfer { NO_TRANSFER, DOWNLOAD, UPLOAD };

    void problem(const std::string& text);

    void makeTraffic();
    void writeSome(int elements);
    void writeRun(const Units& units);
    void startTransfer();
    void moveSome();

    void exchange();
    void endWrite(const FRAME_PRO& frame, int result);
    void endRead(const FRAME_PRO& frame, int result);
    void endTransferFrame(int result);
    void checkTransferred();
    void checkShown(const Units& units);
    void checkOneShotCalls(bool oneShotEnded, int result);
    bool wasTold(const Told& expected) const;
    bool isQuiet();

    RandomSource m_random;
    PlcModel m_plc;
    FaultyLine m_line;
    const HostKind m_kind;
    ListeningHost m_listening;
    PlainHost m_plain;
    BenchHost m_panel;
    WriteAccounts m_accounts;
    RunFigures m_figures;
    std::vector<std::string> m_problems;
    std::vector<Units> m_written;
    std::vector<Units> m_readOnce;
    std::vector<Units> m_moving;
    int m_blocks = 0;
    int m_lastId = 1000;
    int m_recipeWordsTold = 0;
    bool m_oneShotOpen = false;
    bool m_framePending = false;
    Transfer m_transfer = NO_TRANSFER;
};

#endif
