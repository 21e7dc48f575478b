#ifndef PLANT_H
#define PLANT_H

#include "machine/stationLinks.h"
#include "plant/edgeDevice.h"
#include "plant/logPosition.h"
#include "plant/plantSettings.h"
#include "plant/plantStanding.h"
#include "samples/sampleQueue.h"

#include <atomic>
#include <memory>

/// The devices of a configuration: one for each station of each link.
std::vector<EdgeDevice> plantDevices(const std::vector<LinkConfig>& links);

/// What MQTT needs of the station.
struct PlantSurroundings
{
    const StationClock& clock;
    StationLinks& links;
    const std::atomic<bool>& areWritesAllowed;
    QString sequenceFile, cursorFile, topicFile; ///< in the state folder
    std::function<void()> changed; ///< standings() changed; called by the thread of MQTT
};

/// Publishes the station's values at brokers, and takes commands from them. One thread does it all:
///
///     links' threads, history -> SampleQueue -+                   +-> EdgeNode -> MosquittoSession
///     links' threads -> LinkCommands ---------+-> wake -> thread -+
///     main thread -> orders ------------------+                   +-> JsonNode -> MosquittoSession
///
/// A turn of the thread: samples, orders, ends of commands, then what each dialect has to do; then
/// it waits for the sockets, the wake-up, or the time at which somebody is due. Samples are taken
/// ahead of the orders, and passed on behind them: so the devices of new links are known when their
/// first samples come.
///
/// The main thread constructs and destroys it, and calls start(), setDevices() and stop().
class Plant
{
public:
    /// @param settings  with a server, a group and a node
    /// @throws HttpError when the system has no descriptor left
    Plant(const PlantSettings& settings, const PlantSurroundings& surroundings);
    ~Plant();

    /// To be told the rows and the news of the links, from the first on.
    SampleQueue& queue();

    /// Ahead of the first start, and of the links of a new configuration.
    void setDevices(std::vector<EdgeDevice> devices);

    /// @param log  null: no history is kept. It outlives the thread.
    void start(SampleLog* log);

    /// Publishes what waits, tells the brokers that the station ends, and ends the thread: 2 s at
    /// most. The links have stopped before.
    void stop();

    /// Any thread calls it.
    std::vector<PlantStanding> standings() const;

private:
    class Thread;
    const std::unique_ptr<Thread> m_thread;
};

#endif
