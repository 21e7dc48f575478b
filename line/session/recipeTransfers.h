#ifndef RECIPE_TRANSFERS_H
#define RECIPE_TRANSFERS_H

#include "session/sessionSink.h"
#include "session/startedDriver.h"

#include <deque>
#include <optional>

/// A recipe to transfer.
struct RecipeJob
{
    int job = 0;
    RecipeFlag flag = RECIPE_DOWNLOAD_FLAG;
    QVector<_RCP_VAR_PRO> records; ///< the driver must not merge any of them, see RecipePlan
    QByteArray values;             ///< in the layout of the driver's recipe buffer
};

/// The recipes to transfer, one after the other, because the driver has one recipe buffer. The sink
/// is told their progress and their ends.
class RecipeTransfers
{
public:
    RecipeTransfers(StartedDriver& driver, SessionSink& sink) : m_driver(driver), m_sink(sink) {}

    void add(const RecipeJob& recipe);

    /// Hands the next recipe to the driver unless a recipe is under way. Call it only between two
    /// requests.
    void feed();

    /// While a recipe is under way, every request of the driver belongs to it.
    bool isUnderWay() const
    {
        return m_underWay.has_value();
    }

    /// An exchange of the recipe under way is over and will not be retried.
    /// @return the recipe when this exchange completed its download
    std::optional<RecipeJob> frameOver(const FINISHED_EXCHANGE& finished);

private:
    StartedDriver& m_driver;
    SessionSink& m_sink;
    std::deque<RecipeJob> m_waiting;
    std::optional<RecipeJob> m_underWay;
    int m_blocksDone = 0;
};

#endif
