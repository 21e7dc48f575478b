#include "session/recipeTransfers.h"

#include "session/exchangeVerdict.h"

#include <algorithm>
#include <utility>

namespace {

bool isDownload(const RecipeJob& recipe)
{
    return recipe.flag == RECIPE_DOWNLOAD_FLAG;
}

bool isDownloadTo(int station, const RecipeJob& recipe)
{
    return isDownload(recipe) && !recipe.records.isEmpty() &&
           std::all_of(recipe.records.begin(), recipe.records.end(),
                       [station](const _RCP_VAR_PRO& record) { return record.station == station; });
}

/// Both write the same words, and nothing else.
bool isSameWrite(const RecipeJob& a, const RecipeJob& b)
{
    if (a.kind != RecipeJob::TAG_WRITE || b.kind != RecipeJob::TAG_WRITE) return false;
    return std::equal(a.records.begin(), a.records.end(), b.records.begin(), b.records.end(),
                      [](const _RCP_VAR_PRO& one, const _RCP_VAR_PRO& other) {
                          return one.station == other.station && one.regName == other.regName &&
                                 one.addr == other.addr && one.count == other.count;
                      });
}

JobEnd dropped(const RecipeJob& recipe, int timesSent, const QString& why)
{
    if (isDownload(recipe)) return droppedWriteEnd(timesSent, why);
    JobEnd end;
    end.outcome = JobEnd::LOST;
    end.reason = why;
    return end;
}

} // namespace

void RecipeTransfers::add(const RecipeJob& recipe)
{
    const auto older =
        std::find_if(m_waiting.begin(), m_waiting.end(),
                     [&](const RecipeJob& waiting) { return isSameWrite(waiting, recipe); });
    if (older == m_waiting.end()) return m_waiting.push_back(recipe);
    const RecipeJob replaced = std::exchange(*older, recipe);
    endWaiting(replaced, replacedWriteEnd());
}

void RecipeTransfers::feed(const IsHeld& isHeld)
{
    if (m_underWay) return;
    const auto next =
        std::find_if(m_waiting.begin(), m_waiting.end(), [&](const RecipeJob& recipe) {
            const int station = recipe.records.isEmpty() ? 0 : recipe.records.front().station;
            return !isDownloadTo(station, recipe) || !isHeld(station);
        });
    if (next == m_waiting.end()) return;
    m_underWay = *next;
    m_waiting.erase(next);
    m_blocksDone = 0;
    if (m_driver.setRecipe(m_underWay->records, m_underWay->values) > 0) {
        m_driver.raise(m_underWay->flag);
        return;
    }
    JobEnd end;
    end.job = m_underWay->job;
    end.outcome = JobEnd::LOST;
    end.execution = JobEnd::NOT_SENT;
    end.reason = end.trouble =
        QLatin1String("not sent: the driver took none of the recipe's variables");
    m_underWay.reset();
    m_sink.jobEnded(end);
}

/// A transfer is over when the driver has cleared its flag. The result of its last block is the
/// result of the transfer.
std::optional<RecipeJob> RecipeTransfers::frameOver(const FINISHED_EXCHANGE& finished)
{
    if (finished.result == REPLY_ACCEPTED) m_sink.recipeProgress(m_underWay->job, ++m_blocksDone);
    if (m_driver.isRaised(m_underWay->flag)) return std::nullopt;
    const RecipeJob recipe = *std::exchange(m_underWay, std::nullopt);
    JobEnd how;
    if (isDownload(recipe)) {
        how = writeEndOf(finished);
    } else {
        how.outcome = outcomeOf(finished);
        if (how.outcome != JobEnd::DONE) how.reason = troubleOf(finished);
    }
    how.values = m_driver.recipeBytes(int(recipe.values.size()));
    end(recipe, how, m_driver.placesText(finished.frame.var));
    const bool isWritten = how.outcome == JobEnd::DONE && isDownload(recipe);
    return isWritten ? std::make_optional(recipe) : std::nullopt;
}

bool RecipeTransfers::hasWaiting(int station) const
{
    return std::any_of(m_waiting.begin(), m_waiting.end(), [station](const RecipeJob& recipe) {
        return isDownloadTo(station, recipe);
    });
}

void RecipeTransfers::failWaiting(int station)
{
    std::deque<RecipeJob> kept;
    for (const RecipeJob& recipe : std::exchange(m_waiting, {})) {
        if (isDownloadTo(station, recipe))
            endWaiting(recipe, unsentToSilent(station));
        else
            kept.push_back(recipe);
    }
    m_waiting = std::move(kept);
}

void RecipeTransfers::dropAll(const QString& why, const FRAME_PRO* frame, int timesSent)
{
    if (m_underWay) {
        const QString next = QString(QLatin1String("block %1 of %2"))
                                 .arg(m_blocksDone + 1)
                                 .arg(m_underWay->records.size());
        const QString block = frame != nullptr ? m_driver.placesText(frame->var) : next;
        end(*m_underWay, dropped(*m_underWay, timesSent, why), block);
        m_underWay.reset();
    }
    for (const RecipeJob& recipe : std::exchange(m_waiting, {}))
        endWaiting(recipe, dropped(recipe, 0, why));
}

/// Ends a recipe none of whose blocks was sent: its first block stands for all.
void RecipeTransfers::endWaiting(const RecipeJob& recipe, const JobEnd& how)
{
    VARIABLE first;
    if (!recipe.records.isEmpty()) {
        first.station = recipe.records.front().station;
        first.regName = recipe.records.front().regName;
        first.addr = recipe.records.front().addr;
        first.count = recipe.records.front().count;
    }
    end(recipe, how, m_driver.placesText(first));
}

void RecipeTransfers::end(const RecipeJob& recipe, JobEnd how, const QString& block)
{
    how.job = recipe.job;
    if (how.outcome != JobEnd::DONE) how.block = block;
    if (how.outcome != JobEnd::DONE) how.trouble = block + QLatin1String(": ") + how.reason;
    if (how.outcome == JobEnd::LOST && !isDownload(recipe)) how.trouble = how.reason;
    m_sink.jobEnded(how);
}
