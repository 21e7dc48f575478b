#include "exchange/fenceChoice.h"

#include "exchange/longerRead.h"
#include "wire/deviceRegisters.h"
#include "wire/frameShape.h"
#include "wire/replyFrames.h"

namespace {

enum Place { MARKERS, INPUTS, WHERE_IT_ANSWERED, PLACES };

} // namespace

QByteArray FenceChoice::fenceOf(int station, int registers) const
{
    switch (m_place) {
    case INPUTS:
        return readRequest(station, READ_INPUT, 0, registers);
    case WHERE_IT_ANSWERED:
        return readRequest(station, frameByte(m_served, 1), firstWhereItAnswered(registers),
                           registers);
    default:
        return readRequest(station, READ_HOLDING, FIRST_MARKER, registers);
    }
}

/// The first register of the read that the station has answered. Near the end of an area the fence
/// begins further ahead: the station refuses a read past the end.
int FenceChoice::firstWhereItAnswered(int registers) const
{
    const int served = frameWord(m_served, FIRST_REGISTER_AT);
    const int end = areaEnd(frameByte(m_served, 1), served);
    return served <= end ? qMin(served, end - registers + 1) : served;
}

/// The shortest free length costs the least time on the line. While unknown requests may be
/// outstanding, the lengths begin at the seed instead: an earlier program's fences may have had the
/// short lengths, and their answers may still come. The loop finds a length, see MOST_REGISTERS.
QByteArray FenceChoice::next(int station, const AnswerOrder& order, const QByteArray& ahead)
{
    if (order.isFull()) return order.newest().sent;
    // A second refusal with the same signature would not count, so the fence asks with the other
    // function.
    for (int place = 0; place < PLACES && order.isLastAnswer(refusalSignature(fenceOf(station, 1)));
         ++place)
        failed();
    const unsigned first = order.isUnexplained() ? m_seed++ : 0;
    QByteArray fence;
    for (unsigned tried = 0; tried < MOST_REGISTERS; ++tried) {
        fence = fenceOf(station, 1 + int((first + tried) % MOST_REGISTERS));
        const QByteArray signature = answerSignature(fence);
        const bool isOfAhead = !ahead.isEmpty() && signature == answerSignature(ahead);
        if (!isOfAhead && !order.mayCome(signature)) return fence;
    }
    return fence;
}

void FenceChoice::noteServed(const QByteArray& request)
{
    if (isRead(request)) m_served = request;
}

void FenceChoice::failed()
{
    m_place = (m_place + 1) % PLACES;
    if (m_place == WHERE_IT_ANSWERED && m_served.isEmpty()) m_place = MARKERS;
}
