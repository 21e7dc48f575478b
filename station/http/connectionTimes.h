#ifndef CONNECTION_TIMES_H
#define CONNECTION_TIMES_H

#include <QtGlobal>

#include <optional>

/// How long a connection may take, so that a client that sends byte by byte holds it no longer than
/// one that sends nothing. Times are those of StationClock::steady(), in microseconds.
///
///     opened, answered          first byte            head complete          body complete
///   ------> IDLE ------------------> HEAD -----------------> BODY ----------------> ANSWER
///             ^  30 s                 10 s                    30 s                 no limit |
///             +-------------------------------- answered -----------------------------------+
class ConnectionTimes
{
public:
    explicit ConnectionTimes(qint64 now);

    /// Bytes have come. Only the first ones of a request move anything.
    void bytesCame(qint64 now);
    void headEnded(qint64 now);
    void bodyEnded();

    /// The answer is sent: a next request may come.
    void answered(qint64 now);

    /// The connection is being closed.
    void cut()
    {
        m_end.reset();
    }

    /// When the connection is cut; empty: it may last, such as a stream.
    std::optional<qint64> end() const
    {
        return m_end;
    }

private:
    enum Phase { IDLE, HEAD, BODY, ANSWER };

    Phase m_phase = IDLE;
    std::optional<qint64> m_end;
};

#endif
