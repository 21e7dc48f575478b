#include "session/cyclicReads.h"

#include "session/polledTags.h"

#include <utility>

void CyclicReads::start(std::vector<ReadBlock> blocks, qint64 pace)
{
    m_schedule.set(std::move(blocks), pace);
    givenUp();
}

void CyclicReads::handIn(qint64 now)
{
    const std::optional<int> due = m_schedule.due(now);
    if (m_isListCurrent && due == m_handedIn) return;
    m_isListCurrent = true;
    m_handedIn = due;
    QList<KEY_ADDRESS> keys;
    if (due) keys.append(PolledTags::keyOf(m_schedule.block(*due)));
    m_driver.poll(keys);
}

void CyclicReads::begun(qint64 now)
{
    if (m_handedIn) m_schedule.began(*m_handedIn, now);
}

void CyclicReads::answered()
{
    if (m_handedIn) m_schedule.answered(*m_handedIn);
}

void CyclicReads::split(const std::vector<ReadBlock>& parts)
{
    if (m_handedIn) m_schedule.replace(*m_handedIn, parts);
    givenUp();
}

void CyclicReads::givenUp()
{
    m_handedIn.reset();
    m_isListCurrent = false;
}

std::optional<qint64> CyclicReads::nextAt() const
{
    return m_handedIn ? std::nullopt : m_schedule.nextAt();
}
