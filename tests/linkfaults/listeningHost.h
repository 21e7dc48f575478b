#ifndef LISTENING_HOST_H
#define LISTENING_HOST_H

#include "faultyLine.h"

#include "quorvane_ka_kb_plc.h"

#include <QByteArray>

#include <deque>

/// One request and what to hand the driver as its reply, without fences, to try the driver's own
/// checks on a line whose answers are never later than LATEST exchanges:
///
/// - The answer is looked for in everything that came, and handed in alone.
/// - Whole frames that answer something else are dropped.
/// - What is left, damaged bytes, goes to the driver cut to the reply's length, so that its own
///   checks have to hold as well.
/// - After an exchange without an answer, a request of the same shape waits until the line is
/// quiet.
class ListeningHost
{
public:
    explicit ListeningHost(FaultyLine& line) : m_line(line) {}

    QByteArray exchange(const FRAME_PRO& frame);

    int heldBack() const
    {
        return m_heldBack;
    }

    int dropped() const
    {
        return m_dropped;
    }

private:
    struct Awaited
    {
        QByteArray signature;
        int until; ///< last exchange in which the answer may still come
    };

    void holdBack(const QByteArray& signature);
    QByteArray handedIn(const QByteArray& received, const QByteArray& request, int length,
                        bool& answered);

    FaultyLine& m_line;
    std::deque<Awaited> m_awaited;
    int m_exchange = 0;
    int m_heldBack = 0;
    int m_dropped = 0;
};

#endif
