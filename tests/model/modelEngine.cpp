#include "branches.h"
#include "driverModel.h"

// Which request is next.

namespace model {

namespace {

enum { MOST_WRITES_IN_A_ROW = 10, MOST_PRIORITY_BEFORE_ONE_SHOT = 3, RAISED = 1 };

} // namespace

bool DriverModel::flagRaised(bool upload) const
{
    if (m_flags == nullptr) return false;
    return (upload ? m_flags->uploadFlag : m_flags->downloadFlag) == RAISED;
}

void DriverModel::lowerFlag(bool upload)
{
    if (m_flags == nullptr) return;
    (upload ? m_flags->uploadFlag : m_flags->downloadFlag) = 0;
}

std::optional<Frame> DriverModel::getSendFrame()
{
    if (m_pending)
        reach(Branch::OFFERED_AGAIN);
    else
        chooseWork();
    return m_pending;
}

void DriverModel::chooseWork()
{
    const bool download = flagRaised(false);
    const bool upload = flagRaised(true);
    if (download && upload) reach(Branch::BOTH_FLAGS_RAISED);
    if (!download && !upload)
        startNormalWork();
    else if (m_recipes.hasBlock())
        startRecipeBlock(download ? Kind::DOWNLOAD : Kind::UPLOAD);
    else
        buildAgain();
}

void DriverModel::startRecipeBlock(Kind kind)
{
    const bool writing = kind == Kind::DOWNLOAD;
    m_kind = kind;
    const bool transferable = m_recipes.isTransferable(writing, m_recipeBuffer);
    m_recipes.fill(m_current, writing && transferable ? m_recipeBuffer : nullptr);
    if (!transferable) {
        reach(writing ? Branch::CHOSE_UNSENDABLE_DOWNLOAD : Branch::CHOSE_UNSENDABLE_UPLOAD);
        m_pending = unsendableFrame(m_current);
        return;
    }
    reach(writing ? Branch::CHOSE_DOWNLOAD : Branch::CHOSE_UPLOAD);
    m_pending = writing ? writeFrame(m_current) : readFrame(m_current);
}

void DriverModel::buildAgain()
{
    switch (m_kind) {
    case Kind::IDLE:
        reach(Branch::AGAIN_NOTHING);
        return;
    case Kind::WRITE:
        reach(Branch::AGAIN_WRITE);
        break;
    case Kind::ONE_SHOT:
        reach(Branch::AGAIN_ONE_SHOT);
        break;
    case Kind::CYCLIC:
        reach(Branch::AGAIN_CYCLIC);
        break;
    case Kind::DOWNLOAD:
        reach(Branch::AGAIN_DOWNLOAD);
        break;
    case Kind::UPLOAD:
        reach(Branch::AGAIN_UPLOAD);
        break;
    }
    const bool writing = m_kind == Kind::WRITE || m_kind == Kind::DOWNLOAD;
    m_pending = writing ? writeFrame(m_current) : readFrame(m_current);
}

void DriverModel::startNormalWork()
{
    const bool writesAllowed = m_priorityCount < MOST_WRITES_IN_A_ROW;
    const bool oneShotsAllowed = m_priorityCount < MOST_PRIORITY_BEFORE_ONE_SHOT;
    if (!m_writes.empty() && writesAllowed) return startWrite();
    if (!m_writes.empty()) reach(Branch::WRITES_IN_A_ROW_EXHAUSTED);
    if (!m_oneShots.empty() && oneShotsAllowed) return startOneShot();
    if (!m_oneShots.empty()) reach(Branch::ONE_SHOTS_IN_A_ROW_EXHAUSTED);
    m_priorityCount = 0;
    if (!m_reads.empty()) return startCyclic();
    countIdle();
    m_kind = Kind::IDLE;
}

void DriverModel::startWrite()
{
    reach(Branch::CHOSE_WRITE);
    m_kind = Kind::WRITE;
    m_current = m_writes.oldest();
    ++m_priorityCount;
    m_pending = writeFrame(m_current);
}

void DriverModel::startOneShot()
{
    reach(Branch::CHOSE_ONE_SHOT);
    m_kind = Kind::ONE_SHOT;
    m_current = m_oneShots.oldest();
    ++m_priorityCount;
    m_pending = readFrame(m_current);
}

void DriverModel::startCyclic()
{
    reach(Branch::CHOSE_CYCLIC);
    m_kind = Kind::CYCLIC;
    m_current = m_reads.front();
    m_pending = readFrame(m_current);
}

void DriverModel::countIdle() const
{
    const bool workLeft = !m_writes.empty() || !m_oneShots.empty();
    reach(workLeft ? Branch::IDLE_WITH_WORK_LEFT : Branch::IDLE);
}

} // namespace model
