#include "branches.h"
#include "driverModel.h"

// What a reply does.

namespace model {

namespace {

enum Result { NOTHING_PENDING = 0, ACCEPTED = 1, GIVEN_UP = 2, RETRY = 8 };

const int RECIPE_CONTEXT = 0;

} // namespace

int DriverModel::dealRcvFrame(const Bytes& reply, std::string& errorText)
{
    errorText.clear();
    if (!m_pending) {
        reach(Branch::REPLY_NOTHING_PENDING);
        return NOTHING_PENDING;
    }
    const ReplyClass replyClass = classifyReply(*m_pending, reply);
    if (replyClass == ReplyClass::REJECTED) return reject(reply, errorText);
    return accept(replyClass, reply);
}

int DriverModel::accept(ReplyClass replyClass, const Bytes& reply)
{
    if (replyClass == ReplyClass::READ)
        takeRead(reply);
    else if (m_kind == Kind::WRITE)
        m_cache.confirm(m_pending->var);
    m_failed = false;
    m_pending.reset();
    finish();
    m_failCount = 0;
    return ACCEPTED;
}

void DriverModel::takeRead(const Bytes& reply)
{
    m_cache.takeReply(*m_pending, reply, teller());
    if (m_kind != Kind::UPLOAD || m_recipeBuffer == nullptr) return;
    m_recipes.spread(reply, m_pending->dataStart, *m_recipeBuffer,
                     [this](int word) { tell(RECIPE_CONTEXT, -1, "RWI", word); });
}

int DriverModel::reject(const Bytes& reply, std::string& errorText)
{
    ++m_failCount;
    if (m_failCount < m_retryLimit) {
        reach(Branch::RETRIED);
        return RETRY;
    }
    countGiveUp();
    m_failed = true;
    const Variable var = m_pending->var;
    if (m_kind == Kind::WRITE) m_cache.withdraw(var, teller());
    errorText = std::to_string(reply.size()) + "," + std::to_string(var.station) + "," +
                std::to_string(var.addr) + "," + var.area;
    m_pending.reset();
    m_failCount = 0;
    finish();
    return GIVEN_UP;
}

void DriverModel::countGiveUp() const
{
    switch (m_kind) {
    case Kind::IDLE:
        break;
    case Kind::WRITE:
        reach(Branch::GAVE_UP_WRITE);
        break;
    case Kind::ONE_SHOT:
        reach(Branch::GAVE_UP_ONE_SHOT);
        break;
    case Kind::CYCLIC:
        reach(Branch::GAVE_UP_CYCLIC);
        break;
    case Kind::DOWNLOAD:
        reach(Branch::GAVE_UP_DOWNLOAD);
        break;
    case Kind::UPLOAD:
        reach(Branch::GAVE_UP_UPLOAD);
        break;
    }
}

void DriverModel::finish()
{
    switch (m_kind) {
    case Kind::IDLE:
        break;
    case Kind::WRITE:
        reach(m_writes.empty() ? Branch::FINISHED_WRITE_NOT_QUEUED : Branch::FINISHED_WRITE);
        m_writes.removeOldest();
        break;
    case Kind::ONE_SHOT:
        finishOneShot();
        break;
    case Kind::CYCLIC:
        finishCyclic();
        break;
    case Kind::DOWNLOAD:
    case Kind::UPLOAD:
        finishRecipe(m_kind == Kind::UPLOAD);
        break;
    }
}

void DriverModel::finishOneShot()
{
    if (m_oneShots.empty()) {
        reach(Branch::FINISHED_ONE_SHOT_NOT_QUEUED);
        return;
    }
    if (sameRange(m_oneShots.oldest(), m_lastOneShot)) {
        reach(m_failed ? Branch::ONE_SHOT_FAILURE_TOLD : Branch::ONE_SHOT_END_TOLD);
        tell(-1, -1, "-1", m_failed ? -1 : 0);
    } else {
        reach(Branch::ONE_SHOT_END_NOT_TOLD);
    }
    if (m_failed)
        m_oneShots.clear();
    else
        m_oneShots.removeOldest();
}

void DriverModel::finishCyclic()
{
    reach(m_reads.size() > 1 ? Branch::READS_ROTATED : Branch::READS_NOT_ROTATED);
    if (m_reads.size() > 1) m_reads.splice(m_reads.end(), m_reads, m_reads.begin());
}

void DriverModel::finishRecipe(bool upload)
{
    if (!m_failed && m_recipes.advance()) {
        reach(upload ? Branch::UPLOAD_GOES_ON : Branch::DOWNLOAD_GOES_ON);
        return;
    }
    reach(upload ? Branch::UPLOAD_ENDED : Branch::DOWNLOAD_ENDED);
    m_recipes.rewind();
    lowerFlag(upload);
}

} // namespace model
