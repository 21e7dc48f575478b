#ifndef DRIVER_FEEDER_H
#define DRIVER_FEEDER_H

#include "session/driverExchange.h"
#include "session/oneShotReads.h"
#include "session/polledTags.h"
#include "session/recipeTransfers.h"
#include "session/sessionSink.h"
#include "session/shownValues.h"
#include "session/stationWatch.h"
#include "session/writeJobs.h"

/// One host on one link, without any I/O: it feeds the driver, runs its exchanges, finds out what
/// became of every write, read and recipe, and leaves silent stations alone. Times are microseconds
/// of any clock that never goes back. One thread calls it, and its sink is called back from there.
class DriverFeeder
{
public:
    DriverFeeder(StartedDriver& driver, const LineTiming& timing,
                 const ExchangeMachine::Settings& settings, SessionSink& sink);

    /// Polls the blocks from the next request on; or only knows which tags they bring, for
    /// addRead(). One of the two, before anything else.
    void poll(std::vector<Tag> tags, std::vector<ReadBlock> blocks);
    void know(std::vector<Tag> tags, std::vector<ReadBlock> blocks);

    /// Hands in the user's jobs. Job numbers are the caller's and unique.
    void addWrite(int job, const std::vector<ElementWrite>& elements);
    void addRead(int job, const std::vector<ReadBlock>& blocks);
    void addRecipe(const RecipeJob& recipe);

    /// Does what is due. Call it at wakeAt of the step, after received() and after a new job.
    /// A step that is idle has no wakeAt: nothing happens before a new job.
    ExchangeMachine::Step advance(qint64 now);

    void received(const QByteArray& bytes, qint64 now);

    /// The link is gone. Jobs are kept, and go on when it is back.
    void linkLost(const QString& trouble, qint64 now);
    void linkBack(qint64 now);

    /// Of the stations that are polled, none answers.
    bool areAllSilent() const
    {
        return m_isPolling && m_stations.areAllSilent();
    }

    /// A value from the driver's cache, as intf_getData gives it.
    QByteArray value(int station, const QString& area, int number, int units) const
    {
        return m_driver.value(station, area, number, units);
    }

private:
    bool isPointless(const FRAME_PRO& frame) const;

    void feed(qint64 now);
    void feedProbes(qint64 now);
    void expectStations(qint64 now);
    void feedReads();
    void feedWrites();
    void plan();
    void takeFinished(qint64 now);
    void exchangeOver(const FINISHED_EXCHANGE& finished, qint64 now);
    void recipeOver(const FINISHED_EXCHANGE& finished);
    void noteStation(const FINISHED_EXCHANGE& finished, qint64 now);
    void noteHeard(const HEARD_EXCHANGE& exchange, qint64 now);
    void stationAnswered(int station);
    void stationWentSilent(int station, qint64 now);
    void writeOver(const FINISHED_EXCHANGE& finished, qint64 now);
    void readOver(const FINISHED_EXCHANGE& finished, qint64 now);
    void blockOver(const FINISHED_EXCHANGE& finished, qint64 now);
    void reportEnded();
    QString blockTroubleOf(const FINISHED_EXCHANGE& finished) const;

    StartedDriver& m_driver;
    SessionSink& m_sink;
    DriverExchange m_exchange;
    StationWatch m_stations;
    PolledTags m_polled;
    WriteJobs m_writes;
    OneShotReads m_reads;
    ShownValues m_values;
    RecipeTransfers m_recipes;
    bool m_isPolling = false;
    bool m_planDue = false;
    bool m_areStationsNew = false; ///< none of the polled ones was asked yet
    bool m_isEchoTold;             ///< or known to the user
};

#endif
