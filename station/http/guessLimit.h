#ifndef GUESS_LIMIT_H
#define GUESS_LIMIT_H

#include <QHostAddress>

#include <map>

/// Slows down whoever guesses the token. An address has ten wrong guesses, and gets one more every
/// five seconds. One thread uses it. Times are those of StationClock::steady(), in microseconds.
///
/// Only a token that is shown is a guess: whoever is logged in is never held up, also behind the
/// same proxy as somebody who guesses. A proxy on this machine stands for everybody, so its address
/// is never held up: one who guesses would keep all others out.
class GuessLimit
{
public:
    /// Milliseconds until the address may show a token again; 0: now.
    qint64 wait(const QHostAddress& peer, qint64 now) const;

    void wrong(const QHostAddress& peer, qint64 now);

private:
    std::map<QString, qint64> m_paidOff; ///< by network: when all its guesses are forgotten
};

#endif
