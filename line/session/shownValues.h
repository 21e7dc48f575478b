#ifndef SHOWN_VALUES_H
#define SHOWN_VALUES_H

#include "session/polledTags.h"
#include "session/sessionSink.h"
#include "session/startedDriver.h"

#include <set>

/// The tags' values from the driver's cache. A bit that is read through its word is shown as the
/// word's bit: a written bit is shown when the word was read after the write. Tells the sink each
/// read and each change of a tag.
class ShownValues
{
public:
    ShownValues(StartedDriver& driver, const PolledTags& tags, SessionSink& sink)
        : m_driver(driver), m_tags(tags), m_sink(sink)
    {
    }

    /// Starts with new tags, none of which has a value.
    /// @param tags  number of tags
    void reset(size_t tags);

    /// Fetches every tag again at its next read. Needed when values may have changed without a
    /// change callback of the driver.
    void distrust();

    /// Fetches the tags whose change the driver reported. A tag of two words is left out when only
    /// one of them was read: the two words in the cache are then of different times.
    /// @param read  the words or bits that were read since the last call; null: none
    /// @return the changed tags; hand them to tell() after the exchange has been dealt with
    std::set<int> takeChanged(const ReadBlock* read);
    void tell(const std::set<int>& changed, qint64 now);

    /// Tags were read.
    /// @param driverTells  whether the driver reports changes of these tags
    void read(const std::vector<int>& tags, bool driverTells, qint64 now);

    /// A read has brought more than its tags. The driver does not report changes outside of the
    /// block that it polls.
    void readBesides(const ReadBlock& block, qint64 now);

    /// A write was handed to the driver, which shows the written value from now on.
    void toBeWritten(int station, const QString& area, int number, qint64 now);

    /// The driver has given up the write of an element, and shows the value before it.
    void givenUp(int station, const QString& area, int number, qint64 now)
    {
        toBeWritten(station, area, number, now);
    }

    /// The driver has ended the write of an element. The tag is fetched again because of a write
    /// during which a read brought another value: the driver shows the read value, then replaces it
    /// by the written value without a change callback.
    void written(const VARIABLE& element, qint64 now);

private:
    bool isReadWhole(int tag, const ReadBlock* read) const;
    bool fetch(int tag);
    void fetchAndTell(int tag, qint64 now);

    StartedDriver& m_driver;
    const PolledTags& m_tags;
    SessionSink& m_sink;
    std::vector<QByteArray> m_shown; ///< by tag
    std::vector<bool> m_isTrusted;   ///< by tag: it was fetched, and the driver reports its changes
};

#endif
