#ifndef LINK_RUN_H
#define LINK_RUN_H

#include "links/cancellation.h"
#include "links/linkText.h"
#include "session/linkThread.h"

/// One link to one or more stations that runs by itself: give it the driver, where the PLC is, the
/// tags and a sink, and start it. It plans the requests, opens the link, polls on a thread of its
/// own, opens a lost link again, and leaves silent stations alone, until it is destroyed.
///
///     const DriverLibrary driver("libquorvane_ka_kb_plc.so");
///     LinkRun::Settings settings;
///     settings.address = linkAddress("tcp:192.168.0.10,502", LinkDefaults());
///     SharedValues values(tags.size(), false);   // or a sink of your own
///     LinkRun run(driver, settings, tags, values);
///     run.start();
///
/// There is one driver in a process, so there is one run at a time. Qt's network and serial port
/// classes need a QCoreApplication. All functions may be called from any thread but the link's own;
/// construction and destruction are the owner's.
class LinkRun
{
public:
    enum Reading {
        CYCLIC,    ///< the tags are polled
        ON_REQUEST ///< the tags are read when read() asks
    };

    struct Settings
    {
        LinkAddress address;          ///< the PLC; its line gives the silent intervals
        LinkThread::OpenLink opening; ///< opens the link instead of the address; may be empty
        Reading reading = CYCLIC;
        int timeoutMs = 500;     ///< for an answer, 1 or more
        int attempts = 3;        ///< how often a request is sent before it is given up, 1 or more
        int pauseMs = 500;       ///< before a lost link is tried again; grows with each failure
        int turnaroundUs = 1000; ///< the PLC's, for the plan
        EchoMode echo = ECHO_UNKNOWN; ///< the link returns what is sent
    };

    /// @param tags  told of by their index
    /// @param sink  called from the link's thread; has to outlive the run
    LinkRun(const DriverLibrary& driver, const Settings& settings, const std::vector<Tag>& tags,
            LinkSink& sink);

    /// Ends an opening that is under way and waits for the thread. Jobs under way are dropped.
    ~LinkRun();
    LinkRun(const LinkRun&) = delete;
    LinkRun& operator=(const LinkRun&) = delete;

    void start();

    /// The user's jobs. A job's number is the caller's and unique; its end comes to the sink once.
    void read(int job, const std::vector<ReadBlock>& blocks);
    void write(int job, const std::vector<ElementWrite>& elements);
    void transfer(const RecipeJob& recipe);

    /// The requests that read the tags.
    const std::vector<ReadBlock>& blocks() const
    {
        return m_blocks;
    }

    /// Microseconds since construction: the time that the sink is told.
    qint64 now() const;

private:
    LinkThread::Settings threadSettings(const Settings& settings);

    // Constant after construction, but for the members that guard themselves.
    const std::vector<ReadBlock> m_blocks;
    Cancellation m_opening; ///< guards itself
    LinkThread m_thread;    ///< guards itself
};

#endif
