#ifndef FENCE_CHOICE_H
#define FENCE_CHOICE_H

#include "exchange/answerOrder.h"

/// Chooses the fences of one station. A fence is a read. The length of its answer differs from the
/// length of every other reply that may come.
///
/// The fence reads from the start of the markers, from the start of the inputs, or from a register
/// that the station has served before. When the station refuses a fence or does not answer it, the
/// next fence reads from the next of these places.
class FenceChoice
{
public:
    /// The longest fence. A list that is not full has fewer than MOST_KEPT outstanding requests,
    /// and at most MOST_KEPT unasked replies are kept. Each of them, the last accepted answer and
    /// the request behind the fence occupy one length. So one length is always free.
    enum { MOST_REGISTERS = 2 * AnswerOrder::MOST_KEPT + 2 };

    /// @param seed  the first length while unknown requests may be outstanding. Two programs that
    ///              use a line one after the other should have different seeds.
    explicit FenceChoice(unsigned seed) : m_place(0), m_seed(seed) {}

    /// The next fence.
    /// @param order  the outstanding requests of the station
    /// @param ahead  the request that follows the fence; its answer has another length. Empty: none
    QByteArray next(int station, const AnswerOrder& order, const QByteArray& ahead);

    /// Tells that the station refused the last fence, or did not answer it.
    void failed();

    /// Tells that the station answered this request. A read becomes a place for fences; a write
    /// does not.
    void noteServed(const QByteArray& request);

private:
    QByteArray fenceOf(int station, int registers) const;
    int firstWhereItAnswered(int registers) const;

    int m_place; ///< index of the place to read from
    unsigned m_seed;
    QByteArray m_served; ///< the last read that the station answered; empty: none
};

#endif
