#ifndef SOAK_HOST_H
#define SOAK_HOST_H

#include "benchHost.h"
#include "plcModel.h"
#include "randomSource.h"

/// A host that never stops: polls, writes, reads once, transfers recipes and loses replies. What it
/// asks for stays within fixed windows, so a driver that keeps its memory keeps it flat.
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

    explicit SoakHost(const DriverFunctions& driver);

    void exchange();

    /// Ends a transfer under way and starts the driver anew.
    void restart();

    /// Exchanges without faults, with full queues and then until all is done and polled: the state
    /// in which memory compares. They do not count in the figures.
    void settle();

    /// Polled units whose value in the cache is not the PLC's.
    int wrongUnits() const;

    const Figures& figures() const
    {
        return m_figures;
    }

private:
    enum Line { FAULTY, PERFECT };

    void start();
    void fillCache() const;
    void addWork();
    void writeOne();
    void writeMany();
    void readOnce();
    void writeWord(int number);
    void readWord(int number);
    void rest();
    void fillAndEmpty(void (SoakHost::*add)(int number));
    void transfer(RecipeFlag flag);
    bool talk(Line line); ///< whether it was queued work
    void count(int result, int function);
    void countAccepted(int function);
    QByteArray reply(const FRAME_PRO& frame, Line line);
    int draw(int below);
    const Units& drawnUnits();

    BenchHost m_bench;
    PlcModel m_plc;
    RandomSource m_random;
    Figures m_figures;
    int m_silentExchanges = 0;
};

#endif
