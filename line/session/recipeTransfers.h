#ifndef RECIPE_TRANSFERS_H
#define RECIPE_TRANSFERS_H

#include "session/sessionSink.h"
#include "session/startedDriver.h"

#include <deque>
#include <functional>
#include <optional>

/// A recipe to transfer.
struct RecipeJob
{
    enum Kind {
        RECIPE,
        TAG_WRITE ///< the write of a tag in one frame: while it waits, a newer write of the same
                  ///< words takes its turn, and it ends as failed
    };

    Kind kind = RECIPE;
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

    /// True when the writes of a station are to wait.
    using IsHeld = std::function<bool(int station)>;

    /// Hands the next recipe to the driver unless a recipe is under way. A download to one station
    /// waits while the station is held; the recipes behind it do not. Call it only between two
    /// requests.
    void feed(const IsHeld& isHeld);

    /// Whether a download to this station alone waits.
    bool hasWaiting(int station) const;

    /// Ends the waiting downloads to this station alone: nothing of them was sent.
    void failWaiting(int station);

    /// Ends all recipes as lost.
    /// @param why        in words
    /// @param frame      the frame under way; null: none
    /// @param timesSent  times that this frame went out
    void dropAll(const QString& why, const FRAME_PRO* frame, int timesSent);

    /// While a recipe is under way, every request of the driver belongs to it.
    bool isUnderWay() const
    {
        return m_underWay.has_value();
    }

    /// An exchange of the recipe under way is over and will not be retried.
    /// @return the recipe when this exchange completed its download
    std::optional<RecipeJob> frameOver(const FINISHED_EXCHANGE& finished);

private:
    void endWaiting(const RecipeJob& recipe, const JobEnd& how);
    void end(const RecipeJob& recipe, JobEnd how, const QString& block);

    StartedDriver& m_driver;
    SessionSink& m_sink;
    std::deque<RecipeJob> m_waiting;
    std::optional<RecipeJob> m_underWay;
    int m_blocksDone = 0;
};

#endif
