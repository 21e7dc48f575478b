#ifndef STARTED_DRIVER_H
#define STARTED_DRIVER_H

#include "driver/driverLibrary.h"
#include "session/zeroPages.h"

#include <QMutex>

#include <vector>

/// A change that the driver's callback reported.
struct NotedChange
{
    int station;
    QString area;
    int number;
};

/// The driver, started for one link. The object owns the memory that the driver borrows from its
/// host: flags, recipe buffer and mutex. A loaded library is one driver, so only one StartedDriver
/// may exist at a time for each loaded library, and for each thread. One thread constructs the
/// object and makes all calls; for LinkRun this is the link's thread.
class StartedDriver
{
public:
    enum {
        LINK_NUMBER = 1,      ///< context of the callback, and link number of recipe records
        RECIPE_WORDS = 65536, ///< size of the recipe buffer
        ONE_SHOT = 1          ///< varId in the frames of queueRead(); frames of blocks have 4
    };

    /// @param attempts  the driver gives a request up after so many attempts, 1 or more
    StartedDriver(const DriverLibrary& driver, int attempts);
    ~StartedDriver();
    StartedDriver(const StartedDriver&) = delete;
    StartedDriver& operator=(const StartedDriver&) = delete;

    /// The request that is to be sent next.
    /// @return false when the driver has none
    bool nextRequest(FRAME_PRO* frame);

    int dealRcvFrame(QByteArray& reply, QString& errorText);

    /// @return the number of blocks that the driver polls
    int poll(QList<KEY_ADDRESS> keys);

    /// Makes the driver give up all its requests: the one under way, the queued writes and reads,
    /// the recipe and the polled blocks. The driver has nothing to send then, and its cache shows
    /// no value that was not confirmed.
    void giveUpAll();

    /// Queues one read of up to 125 words, or of one group of 16 bits (count is then 1).
    void queueRead(KEY_ADDRESS key);

    /// Queues the write of one element.
    /// @param element  two bytes for a word, low byte first; one byte for a bit
    void queueWrite(int station, const QString& area, int number, QByteArray element);

    /// A value from the driver's cache: two bytes a word, low byte first, or one byte a bit.
    QByteArray value(int station, const QString& area, int number, int units) const;

    /// The changes since the last call. The cache already holds the new values.
    std::vector<NotedChange> takeChanges();

    /// Hands in the records of a recipe and its values.
    /// @param bytes  at most 2 * RECIPE_WORDS
    /// @return the number of records that the driver kept
    int setRecipe(QVector<_RCP_VAR_PRO> records, const QByteArray& bytes);

    /// Starts a transfer. Call it only between two requests, after setRecipe() kept a record.
    void raise(RecipeFlag flag);

    /// Whether the transfer is still under way.
    bool isRaised(RecipeFlag flag);

    /// The first bytes of the recipe's values.
    QByteArray recipeBytes(int count) const;

    /// The addresses that a frame reads or writes, as "MW100 to MW118 of station 1".
    QString placesText(const VARIABLE& var) const;

private:
    static void noteChange(int context, int station, QString& area, int number);

    const DriverLibrary& m_driver; ///< constant after construction

    // The driver borrows the members below until the destructor. Both blocks are large, and a link
    // without recipes writes neither.
    ZeroPages m_shared; ///< the recipe flags; guarded by m_mutex
    ZeroPages m_recipe; ///< used by the calling thread only
    QMutex m_mutex;     ///< the driver locks it too
};

/// The request writes a variable. Not for the frames of recipes.
inline bool isWrite(const FRAME_PRO& frame)
{
    return frame.itemCount == 0;
}

#endif
