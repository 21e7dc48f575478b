#ifndef PANEL_H
#define PANEL_H

#include "driver/driverLibrary.h"

#include <QMutex>

#include <string>
#include <vector>

/// One call of the value-change callback.
struct Told
{
    int context;
    int station;
    std::string area;
    int number;
};

/// A run of units of one area.
struct Units
{
    int station;
    const char* area;
    int first;
    int count;
};

/// The driver as a panel loads it, and the panel's own blocks.
class Panel
{
public:
    enum { CONTEXT = 7, MERGE_LIMIT = 32, RECIPE_WORDS = 64 };

    explicit Panel(int retryLimit);
    ~Panel();
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    /// @return the number of requests in a cycle
    int poll(const std::vector<Units>& all);
    /// A value for each of the units, in one call.
    void write(const Units& units, const std::vector<int>& values, int id);
    /// Words, or one group of 16 bits.
    void readOnce(const Units& units, int id);

    /// Records whose values stand one behind the other in the recipe buffer.
    void setRecipe(const std::vector<Units>& records);
    void raise(RecipeFlag flag);
    bool transferUnderWay();
    int recipeWord(int at) const;
    void setRecipeWord(int at, int value);

    bool nextFrame(FRAME_PRO& frame);
    int takeReply(QByteArray reply);

    /// What the driver's cache shows of an element.
    int shown(int station, const char* area, int number);

    std::vector<Told> told; ///< since it was last cleared

private:
    static bool isBitArea(const char* area);

    const DriverLibrary& m_driver;
    std::vector<unsigned char> m_shared;
    std::vector<unsigned char> m_recipe;
    QMutex m_mutex;
    QString m_errorText;
};

#endif
