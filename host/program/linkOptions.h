#ifndef LINK_OPTIONS_H
#define LINK_OPTIONS_H

#include "exchange/exchangeMachine.h"
#include "output/timeText.h"
#include "plan/readPlan.h"

#include <optional>
#include <string>

/// The options of every verb with a link, with their defaults. LinkRun::Settings explains the times
/// and the attempts.
struct LinkOptions
{
    std::string link = "sim";
    std::string simulator; ///< program file of the simulated PLC; empty: companionSimulator()
    std::string simulatorArguments;
    int timeoutMs = 500;
    int attempts = 3;
    int pauseMs = 500;
    int turnaroundUs = 1000;
    int holdMs = 2000;
    int mostGap = ANY_GAP;         ///< words, see planReads()
    std::optional<qint64> everyMs; ///< pace of a watch; empty: the default of the link's kind
    EchoMode echo = ECHO_UNKNOWN;
    bool trace = false;
    std::string pcap;
    bool json = false;
    TimeText::Style time = TimeText::RELATIVE; ///< of the trace, of lines and of objects
};

#endif
