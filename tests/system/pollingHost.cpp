#include "pollingHost.h"

#include "builtDriver.h"

#include "plan/readPlan.h"
#include "plan/typedAddress.h"
#include "session/startedDriver.h"
#include "wire/protocolLimits.h"

namespace {

enum { MICROSECONDS_PER_MS = 1000 };

} // namespace

std::vector<Tag> tagsFrom(const std::vector<std::string>& addresses)
{
    std::vector<Tag> tags;
    for (const std::string& address : addresses)
        tags.push_back(tagFromAddress(QString::fromStdString(address), driver()));
    return tags;
}

ElementWrite elementOf(const Tag& tag, int value)
{
    ElementWrite write;
    write.station = tag.station;
    write.area = tag.area;
    write.number = tag.number;
    write.label = tag.name;
    write.bytes.append(char(value & 0xFF));
    if (!tag.isBit()) write.bytes.append(char(value >> 8 & 0xFF));
    return write;
}

LinkThread::Settings PollingHost::settings(LinkThread::OpenLink openLink, int answerMs,
                                           int attempts)
{
    LinkThread::Settings settings;
    settings.openLink = std::move(openLink);
    settings.exchange.answer = qint64(answerMs) * MICROSECONDS_PER_MS;
    settings.attempts = attempts;
    settings.firstPauseMs = PAUSE_MS;
    return settings;
}

PollingHost::PollingHost(const LinkThread::Settings& settings, const std::vector<Tag>& tags)
    : m_tags(tags), m_shared(tags.size(), false), m_link(driver(), settings, m_shared)
{
    const WireCost cost = wireCost(settings.timing, 0);
    m_link.poll(tags, planReads(tags, cost, MOST_READ_REGISTERS));
    m_link.start();
}

int PollingHost::write(const std::vector<ElementWrite>& elements)
{
    ledger.handedIn(++m_lastJob, elements);
    m_link.write(m_lastJob, elements);
    return m_lastJob;
}

void PollingHost::takeNews(int ms)
{
    m_shared.waitForNews(ms);
    const News news = m_shared.takeNews();
    for (const JobEnd& end : news.jobEnds)
        ledger.ended(end);
    linkEvents.insert(linkEvents.end(), news.linkEvents.begin(), news.linkEvents.end());
    changes.insert(changes.end(), news.changes.begin(), news.changes.end());
}

bool PollingHost::allReadSince(qint64 time) const
{
    for (const TagState& state : states()) {
        if (!state.good || state.readAt <= time) return false;
    }
    return true;
}

std::string PollingHost::badTags() const
{
    std::string text;
    const std::vector<TagState> all = states();
    for (size_t tag = 0; tag < all.size(); ++tag) {
        if (!all[tag].good)
            text += m_tags[tag].name.toStdString() + ": " + all[tag].trouble.toStdString() + "\n";
    }
    return text;
}
