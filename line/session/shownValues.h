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

    /// Fetches all tags again at the next read of their block. Needed when values may have changed
    /// without a change callback of the driver.
    void distrust()
    {
        m_blocksSeen.clear();
    }

    /// Fetches the tags whose change the driver reported.
    /// @return the changed tags; hand them to tell() after the exchange has been dealt with
    std::set<int> takeChanged();
    void tell(const std::set<int>& changed, qint64 now);

    /// A block was read.
    /// @param driverTells  whether the driver reports changes in this block
    void blockRead(int block, bool driverTells, qint64 now);

    /// The driver has ended the write of an element. The tag is fetched again because of a write
    /// during which a read brought another value: the driver shows the read value, then replaces it
    /// by the written value without a change callback.
    void written(const VARIABLE& element, qint64 now);

private:
    bool fetch(int tag);

    StartedDriver& m_driver;
    const PolledTags& m_tags;
    SessionSink& m_sink;
    std::set<int> m_blocksSeen;
    std::vector<QByteArray> m_shown; ///< by tag
};

#endif
