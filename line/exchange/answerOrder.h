#ifndef ANSWER_ORDER_H
#define ANSWER_ORDER_H

#include <QByteArray>

#include <vector>

/// The outstanding requests of one station: the requests that the station may still answer, in the
/// order in which they were sent.
///
/// The class relies on one property of a station: it answers its requests in their order, each
/// request once, several times, late or never. So after an answer no reply to an earlier request
/// comes any more. Only the last accepted answer may come again.
///
/// Invariants
/// - No two entries have the same answer signature. A request that was sent several times is one
///   entry.
/// - A reply that counts as sure answers exactly one entry.
class AnswerOrder
{
public:
    enum { MOST_KEPT = 24 }; ///< entries; in a full list the newest request is sent again

    /// How far the replies fit the requests; a greater value is a greater doubt.
    enum Doubt {
        IN_STEP,     ///< every reply answered a request
        CAME_AGAIN,  ///< an answer came twice, or noise came; an answer to the request in flight is
                     ///< still sure
        UNEXPLAINED, ///< a reply came that no request asked for, or earlier requests are not known
    };

    /// An outstanding request.
    struct Asked
    {
        QByteArray sent; ///< the bytes that went over the line
        qint64 at;       ///< time at which the last byte had left, in microseconds
        qint64 firstAt;  ///< the same time of the first sending, which the reply may answer
        int times;       ///< number of times that it was sent
        quint64 request; ///< number of the caller's request; 0: a fence
        bool isCopyDue;  ///< an echoing link may return the request, with the bytes of its answer

        bool isFence() const
        {
            return request == 0;
        }
    };

    /// The meaning of a reply.
    struct Taken
    {
        bool isAsked; ///< the reply answers the request `asked`
        bool isCopy;  ///< the reply is the link's copy of a request, not an answer
        bool isSure;  ///< the reply can answer no other request
        Asked asked;
    };

    /// Starts in doubt: another program may have sent requests before.
    AnswerOrder() : m_doubt(UNEXPLAINED) {}

    /// True when the station is in step and no request is outstanding.
    bool isClean() const
    {
        return m_doubt == IN_STEP && m_asked.empty();
    }

    /// True when a reply may belong to an unknown request.
    bool isUnexplained() const
    {
        return m_doubt == UNEXPLAINED;
    }

    /// True when the list holds MOST_KEPT entries.
    bool isFull() const
    {
        return m_asked.size() >= MOST_KEPT;
    }

    /// The request that was sent last. The list must not be empty.
    const Asked& newest() const
    {
        return m_asked.back();
    }

    /// Raises the doubt, never lowers it. Only the answer to a fence, in take(), lowers it.
    void doubt(Doubt doubt)
    {
        m_doubt = qMax(m_doubt, doubt);
    }

    /// Notes a request that was sent.
    /// @param sent       its bytes
    /// @param at         time at which the last byte has left, in microseconds
    /// @param request    number of the caller's request; 0: a fence
    /// @param isCopyDue  the link echoes: the first reply with these bytes is a copy, not an answer
    void ask(const QByteArray& sent, qint64 at, quint64 request, bool isCopyDue = false);

    /// Matches a whole reply of the station with the outstanding requests, and updates the doubt.
    Taken take(const QByteArray& reply);

    /// True when a reply with this signature may still come: it answers an outstanding request, or
    /// is a second copy of an earlier reply.
    bool mayCome(const QByteArray& signature) const;

    /// True when the last accepted answer has this signature. It may come again.
    bool isLastAnswer(const QByteArray& signature) const
    {
        return signature == m_last;
    }

    /// True when the request has the same bytes as the request that was answered last.
    bool isLast(const QByteArray& request) const
    {
        return request == m_lastRequest;
    }

private:
    void noteUnasked(const QByteArray& signature);

    std::vector<Asked> m_asked; ///< oldest first
    Doubt m_doubt;
    QByteArray m_last;                 ///< signature of the last accepted answer
    QByteArray m_lastRequest;          ///< the request that was answered last
    std::vector<QByteArray> m_unasked; ///< signatures of the replies since the last IN_STEP that no
                                       ///< request asked for
};

#endif
