#include "verbs/healthCheck.h"

#include "plan/tagError.h"
#include "plan/tagValue.h"
#include "plan/typedAddress.h"
#include "program/exitStatus.h"
#include "verbs/tagChoice.h"
#include "wire/timeUnits.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace {

const char* const COMPARISONS = "=><"; ///< in the order of Expectation::Comparison

VerbFailure usageError(const QString& text, const QString& problem)
{
    return VerbFailure(EXIT_USAGE,
                       QLatin1String("--until ") + text + QLatin1String(": ") + problem);
}

int comparisonOf(QChar sign)
{
    return int(QString::fromLatin1(COMPARISONS).indexOf(sign));
}

/// Position of the comparison; -1: none. A name may contain its sign, so the longest watched name
/// in front of a sign counts, and otherwise the first sign.
int signPosition(const QString& text, const std::vector<Tag>& tags)
{
    int first = -1;
    for (int at = int(text.size()) - 1; at > 0; --at) {
        if (comparisonOf(text.at(at)) < 0) continue;
        const auto isName = [&](const Tag& tag) { return tag.name == text.left(at); };
        if (std::any_of(tags.begin(), tags.end(), isName)) return at;
        first = at;
    }
    return first;
}

bool isSamePlace(const Tag& first, const Tag& second)
{
    return first.station == second.station && first.area == second.area &&
           first.number == second.number;
}

size_t watchedTag(const QString& text, const QString& name, const std::vector<Tag>& tags,
                  const DriverLibrary& driver)
{
    const auto named = std::find_if(tags.begin(), tags.end(),
                                    [&name](const Tag& tag) { return tag.name == name; });
    if (named != tags.end()) return size_t(named - tags.begin());
    try {
        const Tag place = tagFromAddress(name, driver);
        const auto found = std::find_if(
            tags.begin(), tags.end(), [&place](const Tag& tag) { return isSamePlace(tag, place); });
        if (found != tags.end()) return size_t(found - tags.begin());
    } catch (const TagFileError&) {
        // No address either: the message below says so.
    }
    throw usageError(text, QLatin1String("\"") + name +
                               QLatin1String("\" is no name or address of a watched tag"));
}

double numberOf(Tag tag, const QByteArray& bytes)
{
    tag.format = Tag::DECIMAL;
    return tagValueText(tag, bytes).toDouble();
}

} // namespace

Expectation expectation(const QString& text, const std::vector<Tag>& tags,
                        const DriverLibrary& driver)
{
    const int at = signPosition(text, tags);
    if (at < 0)
        throw usageError(text, QLatin1String("is not NAME=VALUE, NAME>VALUE or NAME<VALUE"));
    Expectation made;
    made.text = text;
    made.tag = watchedTag(text, text.left(at), tags, driver);
    made.comparison = Expectation::Comparison(comparisonOf(text.at(at)));
    const QString value = text.mid(at + 1);
    const Tag& tag = tags[made.tag];
    if (const std::optional<QByteArray> bytes = tagValueBytes(tag, value)) {
        made.value = numberOf(tag, *bytes);
        return made;
    }
    bool isNumber = false;
    made.value = value.toDouble(&isNumber); // a limit need not be a value of the type
    if (!isNumber || made.comparison == Expectation::EQUAL)
        throw usageError(text, valueProblem(tag, value, ALLOW_NON_FINITE));
    return made;
}

HealthCheck::HealthCheck(const std::vector<Tag>& tags, std::vector<Expectation> expectations,
                         qint64 longestBad, qint64 now)
    : m_tags(tags),
      m_expectations(std::move(expectations)),
      m_longestBad(longestBad),
      m_states(tags.size()),
      m_badSince(tags.size(), now),
      m_countsAfter(tags.size(), -1)
{
}

void HealthCheck::judge(const std::vector<News::Change>& changes,
                        const std::vector<TagState>& states, qint64 now)
{
    for (const News::Change& change : changes) {
        note(size_t(change.tag), change.state, change.time);
        judgeExpectations();
    }
    for (size_t tag = 0; tag < m_states.size(); ++tag)
        note(tag, states[tag], now);
    judgeExpectations();
    judgeBadTags(now);
}

void HealthCheck::writeStarted(int tag)
{
    m_writing.insert(tag);
}

void HealthCheck::writeEnded(int tag, qint64 now)
{
    const auto found = m_writing.find(tag);
    if (found != m_writing.end()) m_writing.erase(found);
    m_countsAfter[size_t(tag)] = now;
}

/// A tag may have become good and bad again between two states, but not without a change.
void HealthCheck::note(size_t tag, const TagState& state, qint64 time)
{
    m_states[tag] = state;
    if (state.good)
        m_badSince[tag] = -1;
    else if (m_badSince[tag] < 0)
        m_badSince[tag] = time;
}

bool HealthCheck::isTrue(const Expectation& expected) const
{
    const TagState& state = m_states[expected.tag];
    if (!state.good || state.readAt <= m_countsAfter[expected.tag]) return false;
    if (m_writing.count(int(expected.tag)) > 0) return false;
    const double value = numberOf(m_tags[expected.tag], state.bytes);
    switch (expected.comparison) {
    case Expectation::ABOVE:
        return value > expected.value;
    case Expectation::BELOW:
        return value < expected.value;
    default:
        return value == expected.value || (std::isnan(value) && std::isnan(expected.value));
    }
}

void HealthCheck::judgeExpectations()
{
    m_isMet = m_isMet || (hasExpectations() &&
                          std::all_of(m_expectations.begin(), m_expectations.end(),
                                      [this](const Expectation& each) { return isTrue(each); }));
}

void HealthCheck::judgeBadTags(qint64 now)
{
    if (m_longestBad == 0 || m_failure) return;
    for (size_t tag = 0; tag < m_tags.size(); ++tag) {
        if (m_badSince[tag] < 0 || now - m_badSince[tag] < m_longestBad) continue;
        m_failure = QString(QLatin1String("%1 has been bad for %2 s: %3"))
                        .arg(labelText(m_tags[tag]),
                             QString::number(double(now - m_badSince[tag]) / SECOND, 'f', 1),
                             stateText(tag));
        return;
    }
}

QString HealthCheck::stateText(size_t tag) const
{
    const TagState& state = m_states[tag];
    if (state.good) return tagValueText(m_tags[tag], state.bytes);
    return state.trouble.isEmpty() ? QString(QLatin1String("it was never read")) : state.trouble;
}

QString HealthCheck::openText() const
{
    QStringList open;
    for (const Expectation& each : m_expectations) {
        if (isTrue(each)) continue;
        const bool isGood = m_states[each.tag].good;
        open << each.text + QLatin1String(isGood ? ", the value is " : ", the tag is bad: ") +
                    stateText(each.tag);
    }
    return open.join(QLatin1String("; "));
}
