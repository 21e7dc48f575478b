#ifndef DRIVER_FEEDER_H
#define DRIVER_FEEDER_H

#include "session/answeredTags.h"
#include "session/cyclicReads.h"
#include "session/driverExchange.h"
#include "session/heldStations.h"
#include "session/oneShotReads.h"
#include "session/polledTags.h"
#include "session/recipeTransfers.h"
#include "session/sessionSink.h"
#include "session/shownValues.h"
#include "session/stationWatch.h"
#include "session/writeJobs.h"

/// Feeds the driver for one link, without any I/O. It hands the polled blocks and the user's jobs
/// to the driver, runs the driver's exchanges, and tells the sink the end of every write, read and
/// recipe. Silent stations are probed instead of polled. A block that the PLC refuses is read in
/// parts, until only the refused tags are bad; see partsOfRefused(). Polled blocks stay split.
///
/// Times are microseconds of a clock that never goes back. One thread makes all calls; the sink is
/// called from inside them.
class DriverFeeder
{
public:
    /// @param hold  longest time that writes wait for a station that has fallen silent, from the
    ///              moment of its silence; 0: they fail at once
    /// @param longestPause  before a silent station is probed again, see StationWatch
    DriverFeeder(StartedDriver& driver, const LineTiming& timing,
                 const ExchangeMachine::Settings& settings, SessionSink& sink, qint64 hold = 0,
                 std::optional<qint64> longestPause = std::nullopt);

    /// Polls the blocks from the next request on, see PollSchedule. Call either poll() or know(),
    /// once, before any other function. Writes, one-shot reads and recipes do not wait for the
    /// pace.
    /// @param pace  shortest time from the start of a cycle to the next start; 0: none
    void poll(std::vector<Tag> tags, std::vector<ReadBlock> blocks, qint64 pace = 0);

    /// Notes which tags each block contains, so that addRead() can show their values. Polls
    /// nothing.
    void know(std::vector<Tag> tags, std::vector<ReadBlock> blocks);

    /// Hands in the user's jobs. The caller chooses the job numbers; each number is used once.
    void addWrite(int job, const std::vector<ElementWrite>& elements);
    void addRead(int job, const std::vector<ReadBlock>& blocks);
    void addRecipe(const RecipeJob& recipe);

    /// Does the work that is due. Call it at wakeAt of the last step, after received() and after a
    /// new job. An idle step has no wakeAt: nothing is due before the next job.
    ExchangeMachine::Step advance(qint64 now);

    void received(const QByteArray& bytes, qint64 now);

    /// The link is lost, or open again. Jobs are kept and continue on the new link.
    void linkLost(const QString& trouble, qint64 now);
    void linkBack(qint64 now);

    /// Ends all jobs as lost while the link is lost: nothing of them is sent on the next link. The
    /// end of a write says whether the PLC can have executed it.
    /// @param why  in words
    void endJobs(const QString& why, qint64 now);

    /// Ends all jobs as lost, because no further call follows. The end of a write says whether the
    /// PLC can have executed it.
    /// @param why  in words
    void dropJobs(const QString& why);

    /// No polled station answers.
    bool areAllSilent() const
    {
        return m_isPolling && m_stations.areAllSilent();
    }

    /// A request is under way: it waits for its answer, or for the line.
    bool hasRequest() const
    {
        return !m_exchange.isBetweenRequests();
    }

    /// A value from the driver's cache, in the format of intf_getData: two bytes a word, low byte
    /// first, or one byte a bit.
    QByteArray value(int station, const QString& area, int number, int units) const
    {
        return m_driver.value(station, area, number, units);
    }

private:
    bool isPointless(const FRAME_PRO& frame) const;

    void feed(qint64 now);
    void feedProbes(qint64 now);
    void expectStations(qint64 now);
    void feedHeldWrites(qint64 now);
    void feedReads();
    void feedWrites(qint64 now);
    void takeFinished(qint64 now);
    void exchangeOver(const FINISHED_EXCHANGE& finished, qint64 now);
    void recipeOver(const FINISHED_EXCHANGE& finished);
    void noteStation(const FINISHED_EXCHANGE& finished, qint64 now);
    void noteHeard(const HEARD_EXCHANGE& exchange, qint64 now);
    void stationAnswered(int station, qint64 now);
    void stationWentSilent(int station, const QString& trouble, qint64 now);
    void failWaitingWrites(int station);
    void writeOver(const FINISHED_EXCHANGE& finished, qint64 now);
    void readBack(const FINISHED_EXCHANGE& finished);
    void readOver(const FINISHED_EXCHANGE& finished, qint64 now);
    void blockOver(const FINISHED_EXCHANGE& finished, qint64 now);
    void reportEnded();
    void noteBegun(qint64 now);
    std::vector<ReadBlock> partsInstead(const ReadBlock& block,
                                        const FINISHED_EXCHANGE& finished) const;

    StartedDriver& m_driver;
    SessionSink& m_sink;
    DriverExchange m_exchange;
    StationWatch m_stations;
    HeldStations m_held;
    const qint64 m_probePause; ///< of a station whose writes wait
    PolledTags m_polled;
    AnsweredTags m_answered;
    CyclicReads m_cyclic;
    WriteJobs m_writes;
    OneShotReads m_reads;
    ShownValues m_values;
    RecipeTransfers m_recipes;
    bool m_isPolling = false;
    bool m_hasBegun = false;       ///< the request of m_cyclic's block has begun
    bool m_areStationsNew = false; ///< no polled station was asked yet
    bool m_isEchoTold;             ///< the sink was told of the echo, or the user named it
};

#endif
