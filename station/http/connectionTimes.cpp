#include "http/connectionTimes.h"

namespace {

const qint64 IDLE_US = 30000000;
const qint64 HEAD_US = 10000000;
const qint64 BODY_US = 30000000;

} // namespace

ConnectionTimes::ConnectionTimes(qint64 now) : m_end(now + IDLE_US) {}

void ConnectionTimes::bytesCame(qint64 now)
{
    if (m_phase != IDLE) return;
    m_phase = HEAD;
    m_end = now + HEAD_US;
}

void ConnectionTimes::headEnded(qint64 now)
{
    m_phase = BODY;
    m_end = now + BODY_US;
}

void ConnectionTimes::bodyEnded()
{
    m_phase = ANSWER;
    m_end.reset();
}

void ConnectionTimes::answered(qint64 now)
{
    m_phase = IDLE;
    m_end = now + IDLE_US;
}
