#ifndef ANSWER_ORDER_H
#define ANSWER_ORDER_H

#include <QByteArray>

#include <vector>

/// What one station was asked and may still answer, in the order of asking.
///
/// It rests on one thing: a station answers its requests in their order, each one once, several
/// times, late or never. So an answer tells that nothing comes any more for what was asked before.
/// The answer taken last may come again.
///
/// Invariants: no two entries have one signature, but for a request that was sent several times,
/// which is one entry. What is believed answers exactly one entry.
class AnswerOrder
{
public:
    enum { MOST_KEPT = 24 }; ///< entries; when there are as many, the newest is sent again

    enum Doubt {
        IN_STEP,     ///< all that came was asked for
        CAME_AGAIN,  ///< an answer came twice, or noise did: the request in flight is still sure
        UNEXPLAINED, ///< nobody asked for what came, or what was asked before is not known
    };

    struct Asked
    {
        QByteArray sent; ///< as it went over the line
        qint64 at;       ///< when it had ended there, in microseconds
        int times;       ///< how often it was sent
        quint64 request; ///< number of the caller's request; 0: a fence
        bool isCopyDue;  ///< the link may return it, in the bytes of its answer

        bool isFence() const
        {
            return request == 0;
        }
    };

    struct Taken
    {
        bool isAsked; ///< it answers a request, `asked`
        bool isCopy;  ///< it is what the link returned of a request
        bool isSure;  ///< it can answer nothing else
        Asked asked;
    };

    /// Of a link that was just opened nothing is known.
    AnswerOrder() : m_doubt(UNEXPLAINED) {}

    bool isClean() const
    {
        return m_doubt == IN_STEP && m_asked.empty();
    }

    bool isUnexplained() const
    {
        return m_doubt == UNEXPLAINED;
    }

    bool isFull() const
    {
        return m_asked.size() >= MOST_KEPT;
    }
    const Asked& newest() const
    {
        return m_asked.back();
    }

    void doubt(Doubt doubt)
    {
        m_doubt = qMax(m_doubt, doubt);
    }

    /// @param isCopyDue  the first copy of it is no answer
    void ask(const QByteArray& sent, qint64 at, quint64 request, bool isCopyDue = false);

    /// A whole reply of the station came.
    Taken take(const QByteArray& reply);

    /// A reply of this signature may come without being asked for, or answers an entry.
    bool mayCome(const QByteArray& signature) const;

    /// The answer taken last has this signature, and may come again.
    bool isLastAnswer(const QByteArray& signature) const
    {
        return signature == m_last;
    }

    /// The request has the bytes of the one whose answer was taken last.
    bool isLast(const QByteArray& request) const
    {
        return request == m_lastRequest;
    }

private:
    void noteUnasked(const QByteArray& signature);

    std::vector<Asked> m_asked; ///< oldest first
    Doubt m_doubt;
    QByteArray m_last;                 ///< signature of the answer taken last
    QByteArray m_lastRequest;          ///< what it answered
    std::vector<QByteArray> m_unasked; ///< signatures that came unexplained since all was in step
};

#endif
