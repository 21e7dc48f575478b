#ifndef POLLING_HOST_H
#define POLLING_HOST_H

#include "plan/tagFile.h"
#include "session/linkThread.h"
#include "session/sharedValues.h"
#include "writeLedger.h"

#include <chrono>

/// Tags from addresses such as "MW100" or "2:QX3.1".
std::vector<Tag> tagsFrom(const std::vector<std::string>& addresses);

/// An element to write, for a tag with one word or one bit.
ElementWrite elementOf(const Tag& tag, int value);

/// Polls tags in the test's process. The test has the role of the user.
class PollingHost
{
public:
    enum {
        ANSWER_MS = 200,
        ATTEMPTS = 3,
        PAUSE_MS = 5,
        PATIENCE_S = 600 ///< with sanitizers, on a busy machine
    };

    static LinkThread::Settings settings(LinkThread::OpenLink openLink, int answerMs = ANSWER_MS,
                                         int attempts = ATTEMPTS);

    PollingHost(const LinkThread::Settings& settings, const std::vector<Tag>& tags);

    int write(const std::vector<ElementWrite>& elements);

    /// Takes the news, after a wait of at most `ms` milliseconds.
    void takeNews(int ms);

    /// Takes news until the condition holds, at most for `seconds`.
    /// @return whether the condition holds
    template <typename Condition> bool await(Condition condition, int seconds = PATIENCE_S)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) return false;
            takeNews(NEWS_MS);
        }
        return true;
    }

    /// Whether all tags are good and were read after the time.
    bool allReadSince(qint64 time) const;

    /// The names of all tags that are not good, for the message of a failed test.
    std::string badTags() const;

    qint64 now() const
    {
        return m_link.now();
    }
    std::vector<TagState> states() const
    {
        return m_shared.tags();
    }
    LinkFigures figures() const
    {
        return m_shared.figures(now());
    }
    LinkThread& link()
    {
        return m_link;
    }

    WriteLedger ledger;
    std::vector<News::LinkEvent> linkEvents; ///< all events since the start
    std::vector<News::Change> changes;       ///< all changes since the test cleared it

private:
    enum { NEWS_MS = 20 };

    const std::vector<Tag> m_tags;
    SharedValues m_shared;
    LinkThread m_link;
    int m_lastJob = 0;
};

#endif
