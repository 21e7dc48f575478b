#ifndef BENCH_HOST_H
#define BENCH_HOST_H

#include "driver/driverLibrary.h"

#include <QByteArray>
#include <QMutex>

#include <ostream>
#include <string>
#include <vector>

/// One call of the value-change callback.
struct Told
{
    int context;
    int station;
    std::string area;
    int number;

    bool operator==(const Told& other) const
    {
        return context == other.context && station == other.station && area == other.area &&
               number == other.number;
    }
};

std::ostream& operator<<(std::ostream& out, const Told& told);

/// A run of units of one area.
struct Units
{
    int station;
    std::string area;
    int first;
    int count;
};

KEY_ADDRESS keyOf(const Units& units);

/// The request's bytes.
QByteArray requestOf(const FRAME_PRO& frame);

struct BenchSettings
{
    int retryLimit = 3;
    int mergeLimit = 32;
    int recipeWords = 64;
    ValueChangeCallBack callBack = nullptr; ///< nullptr: the one that fills BenchHost::told
};

/// A host as small as it can be: the blocks that a driver works on, and its calls in the words of a
/// panel. One at a time notes what its callback is told; its end lets the driver go.
class BenchHost
{
public:
    enum { CONTEXT = 7 };

    explicit BenchHost(const DriverFunctions& functions, const BenchSettings& settings = {});
    ~BenchHost();
    BenchHost(const BenchHost&) = delete;
    BenchHost& operator=(const BenchHost&) = delete;

    /// Starts the driver anew, with nothing to poll.
    void start();

    /// @return the number of requests in a cycle
    int poll(const std::vector<Units>& all) const;
    /// A value for each of the units, in one call.
    void write(const Units& units, const std::vector<int>& values, int id = 0) const;
    /// Words, or groups of 16 bits.
    void readOnce(const Units& units, int id = 0) const;
    /// What the driver's cache shows: a value for each of the units.
    std::vector<int> read(const Units& units) const;
    int shown(int station, const std::string& area, int number) const
    {
        return read({station, area, number, 1}).front();
    }

    /// Records whose values stand one behind the other in the recipe buffer.
    /// @return how many the driver keeps
    int setRecipe(const std::vector<Units>& records) const;
    int recipeWord(int at) const;
    void setRecipeWord(int at, int value);

    /// The flags of a transfer, under the mutex that the driver was given.
    void raise(RecipeFlag flag);
    bool isRaised(RecipeFlag flag) const;
    bool transferUnderWay() const
    {
        return isRaised(RECIPE_DOWNLOAD_FLAG) || isRaised(RECIPE_UPLOAD_FLAG);
    }

    bool nextFrame(FRAME_PRO& frame) const
    {
        return driver.getSendFrame(&frame) == 1;
    }
    /// @return a ReplyResult
    int takeReply(QByteArray reply)
    {
        return driver.dealRcvFrame(reply, errorText);
    }

    const DriverFunctions& driver;
    std::vector<unsigned char> shared;
    std::vector<unsigned char> recipe;
    mutable QMutex mutex;
    std::vector<Told> told; ///< since it was last cleared
    QString errorText;

private:
    std::string m_properties;
};

#endif
