#ifndef FENCE_CHOICE_H
#define FENCE_CHOICE_H

#include "exchange/answerOrder.h"

/// Chooses the fences of one station: reads whose answer can be told from every other that may
/// come, by its length.
///
/// The registers come from the start of an area, or from where the station answered a read before.
/// Where one place is refused or not answered, the next fence asks at another one.
class FenceChoice
{
public:
    /// More than can be taken: by entries, by what came unasked, by the answer taken last and by
    /// the request behind the fence.
    enum { MOST_REGISTERS = 2 * AnswerOrder::MOST_KEPT + 2 };

    /// @param seed  where the lengths begin as long as nothing is known of the station. Two
    /// programs
    ///              that follow one another on a line should have different ones.
    explicit FenceChoice(unsigned seed) : m_place(0), m_seed(seed) {}

    /// @param ahead  the request that is to follow, whose answer differs as well; or empty
    QByteArray next(int station, const AnswerOrder& order, const QByteArray& ahead);

    /// The last fence was refused, or not answered.
    void failed();

    /// The station answered this request. A write is no place to read from.
    void noteServed(const QByteArray& request);

private:
    QByteArray fenceOf(int station, int registers) const;

    int m_place;
    unsigned m_seed;
    QByteArray m_served;
};

#endif
