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
    QVector<_RCP_VAR_PRO> records; ///< none of which the driver merges with another
    QByteArray values;             ///< as the driver's recipe buffer holds them
};

/// The recipes on their way, one after the other: the driver has one recipe buffer. Their progress
/// and their ends are told to the sink.
class RecipeTransfers
{
public:
    RecipeTransfers(StartedDriver& driver, SessionSink& sink) : m_driver(driver), m_sink(sink) {}

    void add(const RecipeJob& recipe);

    /// Hands the next recipe to the driver, unless one is under way. Only between two requests.
    void feed();

    /// Every frame is the recipe's until it is over.
    bool isUnderWay() const
    {
        return m_underWay.has_value();
    }

    /// An exchange of the recipe under way is over, and not tried again.
    /// @return the recipe when all of it has been written into the PLC
    std::optional<RecipeJob> frameOver(const FINISHED_EXCHANGE& finished);

private:
    StartedDriver& m_driver;
    SessionSink& m_sink;
    std::deque<RecipeJob> m_waiting;
    std::optional<RecipeJob> m_underWay;
    int m_blocksDone = 0;
};

#endif
