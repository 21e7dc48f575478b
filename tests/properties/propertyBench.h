#ifndef PROPERTY_BENCH_H
#define PROPERTY_BENCH_H

#include "driverState.h"

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
    std::string name;
    int addr;
};

/// What comes back for a request.
enum class Reply { GOOD, EMPTY, DAMAGED, CUT, OTHER_STATION, RANDOM, KINDS };

const char* nameOf(Reply reply);
std::ostream& operator<<(std::ostream& out, Reply reply);

/// A host's blocks around a driver as new, for one run of a property.
class PropertyBench
{
public:
    enum { CONTEXT = 7, MOST_QUEUED = 513, RECIPE_WORDS = 8192 };

    PropertyBench(int retryLimit, int mergeLimit);
    ~PropertyBench();
    PropertyBench(const PropertyBench&) = delete;
    PropertyBench& operator=(const PropertyBench&) = delete;

    static KEY_ADDRESS key(int station, const QString& area, int addr, int count);
    int poll(const std::vector<KEY_ADDRESS>& keys);

    /// One element, whose two value bytes are the low ones of `value`.
    void write(int station, const char* area, int addr, int value, int varId);

    /// Elements from `addr` on in one call, whose values count up from `value`, in their low bits.
    void writeRun(int station, const char* area, int addr, int count, int value, int varId);

    void readOnce(int station, const char* area, int addr, int count, int varId);
    int setRecipe(const std::vector<_RCP_VAR_PRO>& records);

    void raise(RecipeFlag flag);
    bool isRaised(RecipeFlag flag) const;
    bool transferUnderWay() const;

    /// Hands in an answer of this kind to the frame; `noise` chooses its bytes.
    /// @return a ReplyResult
    int answer(const FRAME_PRO& frame, Reply reply, unsigned noise);

    std::vector<Told> told; ///< since it was last cleared
    QString errorText;

private:
    std::vector<unsigned char> m_shared;
    std::vector<unsigned char> m_recipe;
    QMutex m_mutex;
};

/// An answer of this kind to the frame.
QByteArray replyTo(const FRAME_PRO& frame, Reply reply, unsigned noise);

#endif
