#include "machine/linkJobs.h"

#include "session/tagWrites.h"

#include <utility>

namespace {

enum { PROGRESS_EVERY_US = 250000 };

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

QString notSent(const QString& why)
{
    return text("not sent: ") + why;
}

/// A refusal is told as such only when the PLC has executed no attempt for sure.
WriteEnd::Outcome outcomeOf(const JobEnd& end)
{
    if (end.outcome == JobEnd::DONE) return WriteEnd::CONFIRMED;
    const bool isSure = end.outcome == JobEnd::REFUSED && end.execution == JobEnd::ANSWERED;
    return isSure ? WriteEnd::REFUSED : WriteEnd::FAILED;
}

WriteEnd failedWrite(const QString& reason)
{
    WriteEnd end;
    end.outcome = WriteEnd::FAILED;
    end.reason = reason;
    return end;
}

} // namespace

LinkJobs::LinkJobs(LinkValues& values, JobAudit& audit, const StationClock& clock)
    : m_values(values), m_audit(audit), m_clock(clock), m_whyClosed(text("the link is not started"))
{
}

void LinkJobs::open(LinkRun& run)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_run = &run;
}

void LinkJobs::close(const QString& why)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_run = nullptr;
    if (!std::exchange(m_isClosed, true)) m_whyClosed = why;
}

void LinkJobs::endRest()
{
    std::map<int, Write> writes;
    std::map<int, Recipe> recipes;
    QString why;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::swap(writes, m_writes);
        std::swap(recipes, m_recipes);
        why = notSent(m_whyClosed);
    }
    for (const auto& [job, write] : writes)
        end(write, failedWrite(why));
    for (const auto& [job, recipe] : recipes)
        end(recipe, recipe.run->givenUp(why));
}

JobAsked LinkJobs::asked(const QString& from) const
{
    return {m_audit.nextId(), m_values.name(), from};
}

/// Why a job cannot be handed in; empty: it can. The caller holds m_mutex.
QString LinkJobs::problem(size_t waiting, size_t most) const
{
    if (m_run == nullptr) return notSent(m_whyClosed);
    const LinkState state = m_values.state();
    if (state.standing == LINK_OPENING) return notSent(text("the link is not open yet"));
    if (state.standing == LINK_LOST) return notSent(text("the link is lost: ") + state.trouble);
    if (waiting >= most) return notSent(text("too many wait on this link already"));
    return QString();
}

quint64 LinkJobs::write(int tag, const QByteArray& bytes, const QString& from, WriteEnded ended)
{
    Write write = {asked(from), tag, bytes, std::move(ended)};
    const quint64 id = write.asked.id;
    QString trouble;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        trouble = problem(m_writes.size(), MOST_WRITES);
        if (trouble.isEmpty()) {
            const int job = ++m_lastJob;
            m_writes[job] = std::move(write);
            handIn(job, m_values.tags()[size_t(tag)], bytes);
            return id;
        }
    }
    end(write, failedWrite(trouble));
    return id;
}

/// The caller holds m_mutex.
void LinkJobs::handIn(int job, const Tag& tag, const QByteArray& bytes)
{
    if (tag.units() == 1)
        m_run->write(job, elementWrites(tag, bytes, tag.name));
    else
        m_run->transfer(oneFrameWrite(job, {tag}, {bytes}));
}

quint64 LinkJobs::transfer(const RecipeRequest& request, const QString& from, RecipeEnded ended)
{
    const JobAsked by = asked(from);
    QString trouble;
    try {
        const std::lock_guard<std::mutex> lock(m_mutex);
        trouble = problem(m_recipes.size(), MOST_RECIPES);
        if (trouble.isEmpty()) {
            auto run = std::make_unique<RecipeRun>(request, m_run->cost());
            const int job = ++m_lastJob;
            run->start(*m_run, job);
            m_recipes[job] = {by, std::move(run), std::move(ended), m_clock.steady()};
            return by.id;
        }
    } catch (const RecipeError& error) {
        trouble = QString::fromUtf8(error.what()).replace(QLatin1Char('\n'), text("; "));
    }
    refuse(by, request, trouble, ended);
    return by.id;
}

void LinkJobs::refuse(const JobAsked& by, const RecipeRequest& request, const QString& reason,
                      const RecipeEnded& ended) const
{
    RecipeEnd end = RecipeRun::failed(QString(), reason);
    end.id = by.id;
    m_audit.recipeEnded(by, request, end);
    ended(end);
}

void LinkJobs::end(const Write& write, WriteEnd end) const
{
    end.id = write.asked.id;
    end.held = m_values.reading(write.tag);
    m_audit.writeEnded(write.asked, m_values.tags()[size_t(write.tag)], write.bytes, end);
    write.ended(end);
}

void LinkJobs::end(const Recipe& recipe, RecipeEnd end) const
{
    end.id = recipe.asked.id;
    m_audit.recipeEnded(recipe.asked, recipe.run->request(), end);
    recipe.ended(end);
}

void LinkJobs::jobEnded(const JobEnd& end)
{
    writeJobEnded(end);
    recipeJobEnded(end);
}

void LinkJobs::writeJobEnded(const JobEnd& jobEnd)
{
    Write write;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_writes.find(jobEnd.job);
        if (found == m_writes.end()) return;
        write = std::move(found->second);
        m_writes.erase(found);
    }
    WriteEnd ended;
    ended.outcome = outcomeOf(jobEnd);
    ended.reason = jobEnd.reason;
    end(write, ended);
}

/// Hands in the recipe's next step, or ends the recipe.
void LinkJobs::recipeJobEnded(const JobEnd& jobEnd)
{
    Recipe recipe;
    RecipeEnd ended;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_recipes.find(jobEnd.job);
        if (found == m_recipes.end()) return;
        recipe = std::move(found->second);
        m_recipes.erase(found);
        recipe.run->ended(jobEnd);
        if (!recipe.run->isOver() && m_run != nullptr) {
            const int job = ++m_lastJob;
            recipe.run->start(*m_run, job);
            m_recipes[job] = std::move(recipe);
            return;
        }
        ended = recipe.run->isOver() ? recipe.run->end() : recipe.run->givenUp(m_whyClosed);
    }
    end(recipe, ended);
}

/// Tells of a long recipe a few times a second: the events of a station are kept only so long as no
/// thousand others follow.
void LinkJobs::recipeProgress(int job, int done)
{
    JobAsked by;
    RecipeRequest::Kind kind = RecipeRequest::DOWNLOAD;
    int blocksDone = 0;
    int blocks = 0;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_recipes.find(job);
        if (found == m_recipes.end()) return;
        Recipe& recipe = found->second;
        const qint64 now = m_clock.steady();
        if (now - recipe.toldAt < PROGRESS_EVERY_US) return;
        recipe.toldAt = now;
        by = recipe.asked;
        kind = recipe.run->request().kind;
        blocksDone = recipe.run->blocksDone(done);
        blocks = recipe.run->blocks();
    }
    m_audit.recipeProgress(by, kind, blocksDone, blocks);
}
