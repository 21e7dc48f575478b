#ifndef STARTED_DRIVER_H
#define STARTED_DRIVER_H

#include "driver/driverLibrary.h"

#include <QMutex>

#include <vector>

/// A change that the driver's callback told of.
struct NotedChange
{
    int station;
    QString area;
    int number;
};

/// The driver, started for one link with everything that it borrows from its host. There is one
/// driver in a process, so there is one session at a time. All calls come from one thread.
class StartedDriver
{
public:
    enum {
        LINK_NUMBER = 1,       ///< the callback's context, and the link of its recipe records
        MOST_READ_WORDS = 125, ///< MODBUS Application Protocol V1.1b3, 6.3
        RECIPE_WORDS = 65536,  ///< room for the values of a recipe
        ONE_SHOT = 1           ///< varId of the frames of queueRead(); polled blocks carry 4
    };

    /// @param attempts  how often a request is sent before it is given up, 1 or more
    StartedDriver(const DriverLibrary& driver, int attempts);
    ~StartedDriver();
    StartedDriver(const StartedDriver&) = delete;
    StartedDriver& operator=(const StartedDriver&) = delete;

    int getSendFrame(FRAME_PRO* frame);
    int dealRcvFrame(QByteArray& reply, QString& errorText);

    /// @return the number of blocks that the driver polls
    int poll(QList<KEY_ADDRESS> keys);

    /// Queues one read of up to 125 words, or of one group of 16 bits (count is then 1).
    void queueRead(KEY_ADDRESS key);

    /// Queues the write of one element: two bytes for a word, low byte first, one for a bit.
    void queueWrite(int station, const QString& area, int number, QByteArray element);

    /// From the driver's cache: two bytes a word, low byte first, or one byte a bit.
    QByteArray value(int station, const QString& area, int number, int units) const;

    /// The changes noted since the last call. Their values are in the cache by now.
    std::vector<NotedChange> takeChanges();

    /// Hands in a recipe set and its values.
    /// @param bytes  at most 2 * RECIPE_WORDS
    /// @return the number of records that the driver kept
    int setRecipe(QVector<_RCP_VAR_PRO> records, const QByteArray& bytes);

    /// Starts a transfer. Only after setRecipe() kept a record, and between two requests.
    void raise(RecipeFlag flag);

    /// The transfer is still under way.
    bool isRaised(RecipeFlag flag);

    /// The first bytes of the recipe's values.
    QByteArray recipeBytes(int count) const;

    /// What a frame reads or writes as the user knows it, "MW100 to MW118 of station 1".
    QString placesText(const VARIABLE& var) const;

private:
    static void noteChange(int context, int station, QString& area, int number);

    const DriverLibrary& m_driver;
    std::vector<unsigned char>
        m_shared; ///< the flags; guarded by m_mutex, which the driver has too
    std::vector<unsigned char> m_recipe;
    QMutex m_mutex;
};

#endif
