#ifndef SOAK_HOST_H
#define SOAK_HOST_H

#include "driver/driverLibrary.h"
#include "plcModel.h"

#include <QMutex>

#include <random>
#include <vector>

/// A host that never stops: polls, writes, reads once, transfers recipes, loses replies, and starts
/// the driver anew now and then. What it asks for stays within fixed windows, so a driver that
/// keeps its memory keeps it flat.
class SoakHost
{
public:
    struct Figures
    {
        long long accepted = 0;
        long long rejected = 0;
        long long givenUp = 0;
        long long bitFrames = 0;    ///< accepted, function 5
        long long wordFrames = 0;   ///< accepted, function 6
        long long recipeFrames = 0; ///< accepted, function 16
        long long oneShotReads = 0;
        long long downloads = 0;
        long long uploads = 0;
        long long starts = 0;
        long long told = 0; ///< calls of the callback
    };

    explicit SoakHost(const DriverLibrary& driver);

    void exchange();

    /// Ends a transfer under way and starts the driver anew: the state in which memory compares.
    void restart();

    /// Exchanges without faults and new work until all that is queued is done and all is polled.
    void settle();

    /// Polled units whose value in the cache is not the PLC's.
    int wrongUnits() const;

    const Figures& figures() const
    {
        return m_figures;
    }

private:
    void start();
    void addWork();
    void writeOne();
    void writeMany();
    void readOnce();
    void transfer(RecipeFlag flag);
    bool isTransferring() const;
    bool talk(bool faults);
    void countAccepted(int function);
    QByteArray reply(const FRAME_PRO& frame, bool faults);
    int draw(int below);

    const DriverLibrary& m_driver;
    PlcModel m_plc;
    std::mt19937_64 m_random;
    std::vector<unsigned char> m_shared;
    std::vector<unsigned char> m_recipe;
    QMutex m_mutex;
    Figures m_figures;
    long long m_exchanges = 0;
    int m_silentExchanges = 0;
};

#endif
