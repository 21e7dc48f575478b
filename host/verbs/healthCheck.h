#ifndef HEALTH_CHECK_H
#define HEALTH_CHECK_H

#include "driver/driverLibrary.h"
#include "plan/tag.h"
#include "session/sharedValues.h"

#include <optional>
#include <set>
#include <vector>

/// A condition on the value of a tag.
struct Expectation
{
    enum Comparison { EQUAL, ABOVE, BELOW };

    size_t tag = 0; ///< index of the watched tag
    Comparison comparison = EQUAL;
    double value = 0;
    QString text; ///< in the user's words
};

/// Reads "NAME=VALUE", "NAME>VALUE" or "NAME<VALUE". NAME is a name or an address of a watched tag.
/// @throws VerbFailure when the text is malformed, when no watched tag has the name, or when the
///         value after "=" does not fit the tag's type
Expectation expectation(const QString& text, const std::vector<Tag>& tags,
                        const DriverLibrary& driver);

/// Judges the tags of a watch: whether all expectations were true at one time, and whether a tag
/// has been bad for too long. Times are microseconds on the clock of the news. One thread uses it.
///
/// - Only a good value that was read from the PLC since the start counts.
/// - A tag without a value yet is bad from the start on.
/// - Between the start and the end of a write by this host the driver shows the written value. The
///   tag's value counts again from the first read behind the write's end.
class HealthCheck
{
public:
    /// @param longestBad  a tag may be bad for a shorter time; 0: for any time
    /// @param now         the start
    HealthCheck(const std::vector<Tag>& tags, std::vector<Expectation> expectations,
                qint64 longestBad, qint64 now);

    /// Judges the changes in their order, then the states of the tags.
    /// @param states  taken after the changes, at `now`
    void judge(const std::vector<News::Change>& changes, const std::vector<TagState>& states,
               qint64 now);

    /// Writes of this host concern the tag, or no longer concern it.
    void writeStarted(int tag);
    void writeEnded(int tag, qint64 now);

    /// Whether there is anything to judge.
    bool isAsked() const
    {
        return hasExpectations() || m_longestBad > 0;
    }

    bool hasExpectations() const
    {
        return !m_expectations.empty();
    }

    /// There are expectations, and all of them were true at one time.
    bool isMet() const
    {
        return m_isMet;
    }

    /// The first tag that was bad for too long and the reason, in one sentence.
    const std::optional<QString>& failure() const
    {
        return m_failure;
    }

    bool isDecided() const
    {
        return m_isMet || m_failure;
    }

    /// The expectations that are not true now, and the values of their tags, in one line.
    QString openText() const;

private:
    void note(size_t tag, const TagState& state, qint64 time);
    bool isTrue(const Expectation& expected) const;
    void judgeExpectations();
    void judgeBadTags(qint64 now);
    QString stateText(size_t tag) const;

    const std::vector<Tag> m_tags;
    const std::vector<Expectation> m_expectations;
    const qint64 m_longestBad;
    std::vector<TagState> m_states;
    std::vector<qint64> m_badSince;    ///< by tag; -1: good
    std::vector<qint64> m_countsAfter; ///< by tag; earlier reads may show a written value
    std::multiset<int> m_writing;      ///< tags of writes that have not ended
    bool m_isMet = false;
    std::optional<QString> m_failure;
};

#endif
