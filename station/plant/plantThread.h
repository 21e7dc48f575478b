#ifndef PLANT_THREAD_H
#define PLANT_THREAD_H

#include "broker/mosquittoSession.h"
#include "http/wakeup.h"
#include "plant/linkCommands.h"
#include "plant/plant.h"
#include "plant/plantDialect.h"
#include "sparkplug/birthSequenceFile.h"

#include <thread>

/// The thread of MQTT, and what it uses; see Plant.
class Plant::Thread
{
public:
    Thread(const PlantSettings& settings, const PlantSurroundings& surroundings);
    ~Thread();

    SampleQueue& queue()
    {
        return m_queue;
    }
    void setDevices(std::vector<EdgeDevice> devices);
    void start(SampleLog* log);
    void stop();
    std::vector<PlantStanding> standings() const;

private:
    /// A dialect with its session.
    struct Spoken
    {
        MosquittoSession session;
        std::unique_ptr<PlantDialect> dialect;
    };

    void addDialects();
    void run();
    void takeNews();
    void takeOrders();
    qint64 turnDialects();
    void wait(qint64 due);
    bool isOver() const;
    void noteStandings();

    const PlantSettings m_settings;
    const PlantSurroundings m_surroundings;
    const Wakeup m_wakeup; ///< guards itself
    SampleQueue m_queue;   ///< guards itself

    // Used by the thread alone, once it runs.
    LinkCommands m_commands;
    BirthSequenceFile m_sequence;
    std::optional<DeliveryLedger> m_ledger; ///< constant behind start()
    std::vector<std::unique_ptr<Spoken>> m_spoken;
    qint64 m_stopLimit = 0; ///< steady clock, microseconds; 0: nobody has asked to stop

    mutable std::mutex m_mutex;                       ///< guards what follows
    std::optional<std::vector<EdgeDevice>> m_devices; ///< to be taken
    bool m_isStopAsked = false;
    std::vector<PlantStanding> m_standings;

    std::thread m_thread; ///< of the main thread
};

#endif
