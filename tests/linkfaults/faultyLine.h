#ifndef FAULTY_LINE_H
#define FAULTY_LINE_H

#include "plcModel.h"
#include "randomSource.h"

#include <array>
#include <deque>

enum class Fault {
    NONE,
    DROP_REQUEST, ///< the PLC never hears it
    DROP,         ///< the PLC obeys, its reply is lost
    CORRUPT,      ///< one to three bits of the reply, which its CRC is sure to find
    TRUNCATE,     ///< at least the last byte is missing
    DUPLICATE,    ///< the reply comes twice, one behind the other
    LATE,         ///< the reply comes in place of that to one of the next requests
    GARBAGE_BEFORE,
    GARBAGE_AFTER,
    KINDS
};

const char* faultName(Fault fault);

/// Carries requests to a PLC, and replies back with faults drawn from a seed.
class FaultyLine
{
public:
    enum { LATEST = 3 }; ///< exchanges after which a reply comes no more

    FaultyLine(PlcModel& plc, std::uint32_t seed) : m_plc(plc), m_random(seed) {}

    /// What a host has received when it stops waiting for the answer to this request.
    QByteArray exchange(const QByteArray& request);

    /// A host that listens until the line is quiet: nothing late comes after that.
    void waitUntilQuiet();

    /// One in `of` exchanges has a fault; 0: none.
    void setFaultEvery(int of);
    /// Replies that would be late are lost instead.
    void loseLateReplies();
    /// The fault of the next exchange, instead of a drawn one.
    void setNextFault(Fault fault);

    int faults(Fault fault) const;

    /// Replies that were lost because a late one came in their place.
    int displaced() const
    {
        return m_displaced;
    }

private:
    struct Late
    {
        int due; ///< exchange in whose place it comes
        QByteArray reply;
    };

    Fault drawFault();
    QByteArray faulty(Fault fault, const QByteArray& reply);
    QByteArray corrupted(QByteArray reply);
    QByteArray garbage();

    PlcModel& m_plc;
    RandomSource m_random;
    int m_faultEvery = 0;
    bool m_losesLateReplies = false;
    Fault m_next = Fault::NONE;
    int m_exchange = 0;
    int m_displaced = 0;
    std::deque<Late> m_late;
    std::array<int, static_cast<size_t>(Fault::KINDS)> m_faults = {};
};

#endif
