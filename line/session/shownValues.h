#ifndef SHOWN_VALUES_H
#define SHOWN_VALUES_H

#include "session/polledTags.h"
#include "session/sessionSink.h"
#include "session/startedDriver.h"

#include <set>

/// The tags' values as the driver's cache has them, and telling the sink of each one that is read
/// or changes.
class ShownValues
{
public:
    ShownValues(StartedDriver& driver, const PolledTags& tags, SessionSink& sink)
        : m_driver(driver), m_tags(tags), m_sink(sink)
    {
    }

    /// The tags are others from now on; none has a value yet.
    void reset(size_t tags);

    /// Values may have changed without a word of the driver, so all tags are looked at again.
    void distrust()
    {
        m_blocksSeen.clear();
    }

    /// Takes up the changes that the driver has told of.
    /// @return the tags that changed; tell() of them when the exchange has been dealt with
    std::set<int> takeChanged();
    void tell(const std::set<int>& changed, qint64 now);

    /// A block was read.
    /// @param driverTells  of the changes in it
    void blockRead(int block, bool driverTells, qint64 now);

    /// The driver is done with the write of an element. When a read has brought another value since
    /// the host wrote, the driver shows that one and does not tell that the written value takes its
    /// place.
    void written(const VARIABLE& element, qint64 now);

private:
    void fetch(int tag);

    StartedDriver& m_driver;
    const PolledTags& m_tags;
    SessionSink& m_sink;
    std::set<int> m_blocksSeen;
    std::vector<QByteArray> m_shown; ///< by tag
};

#endif
