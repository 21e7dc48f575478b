#include "session/recipeTransfers.h"

#include "session/exchangeVerdict.h"

#include <utility>

void RecipeTransfers::add(const RecipeJob& recipe)
{
    m_waiting.push_back(recipe);
}

void RecipeTransfers::feed()
{
    if (m_underWay || m_waiting.empty()) return;
    m_underWay = m_waiting.front();
    m_waiting.pop_front();
    m_blocksDone = 0;
    if (m_driver.setRecipe(m_underWay->records, m_underWay->values) > 0) {
        m_driver.raise(m_underWay->flag);
        return;
    }
    JobEnd end;
    end.job = m_underWay->job;
    end.outcome = JobEnd::LOST;
    end.trouble = QLatin1String("the driver took none of the recipe's variables");
    m_underWay.reset();
    m_sink.jobEnded(end);
}

/// A transfer is over when the driver has cleared its flag; the block that it ended with tells how.
std::optional<RecipeJob> RecipeTransfers::frameOver(const FINISHED_EXCHANGE& finished)
{
    if (finished.result == REPLY_ACCEPTED) m_sink.recipeProgress(m_underWay->job, ++m_blocksDone);
    if (m_driver.isRaised(m_underWay->flag)) return std::nullopt;
    JobEnd end;
    end.job = m_underWay->job;
    end.outcome = outcomeOf(finished);
    if (end.outcome != JobEnd::DONE)
        end.trouble =
            m_driver.placesText(finished.frame.var) + QLatin1String(": ") + troubleOf(finished);
    end.values = m_driver.recipeBytes(int(m_underWay->values.size()));
    const RecipeJob recipe = *std::exchange(m_underWay, std::nullopt);
    m_sink.jobEnded(end);
    const bool isWritten = end.outcome == JobEnd::DONE && recipe.flag == RECIPE_DOWNLOAD_FLAG;
    return isWritten ? std::make_optional(recipe) : std::nullopt;
}
