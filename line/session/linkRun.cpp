#include "session/linkRun.h"

#include "links/openLink.h"
#include "plan/wireCost.h"
#include "session/startedDriver.h"
#include "wire/protocolLimits.h"
#include "wire/timeUnits.h"

#include <random>

namespace {

enum { NETWORK_PACE_MS = 100 };

qint64 paceOf(const LinkRun::Settings& settings)
{
    return settings.paceMs.value_or(defaultPaceMs(settings.address.kind)) * MILLISECOND;
}

/// Rates are those of polling: on request, all tags are read at once.
RatedReads plannedReads(const LinkRun::Settings& settings, const std::vector<Tag>& tags,
                        const WireCost& cost)
{
    if (settings.reading == LinkRun::CYCLIC)
        return planRatedReads(tags, cost, MOST_READ_REGISTERS, paceOf(settings), settings.mostGap);
    RatedReads reads;
    reads.blocks = shortestReads(tags, cost, MOST_READ_REGISTERS, settings.mostGap);
    return reads;
}

std::vector<std::optional<qint64>> turnsOf(const std::vector<Tag>& tags, qint64 cycle)
{
    std::vector<std::optional<qint64>> turns;
    for (const Tag& tag : tags)
        turns.push_back(turnOf(tag, cycle));
    return turns;
}

} // namespace

qint64 defaultPaceMs(LinkAddress::Kind kind)
{
    return kind == LinkAddress::NETWORK ? int(NETWORK_PACE_MS) : 0;
}

LinkRun::LinkRun(const DriverLibrary& driver, const Settings& settings,
                 const std::vector<Tag>& tags, LinkSink& sink)
    : m_cost(wireCost(timingOf(settings.address), settings.turnaroundUs)),
      m_pace(paceOf(settings)),
      m_reads(plannedReads(settings, tags, m_cost)),
      m_turns(turnsOf(tags, m_reads.cycle)),
      m_thread(driver, threadSettings(settings), sink)
{
    if (settings.reading == CYCLIC)
        m_thread.poll(tags, m_reads.blocks, m_pace);
    else
        m_thread.know(tags, m_reads.blocks);
}

LinkRun::~LinkRun()
{
    stop(QLatin1String("the host stopped"));
}

void LinkRun::askToStop(const QString& why)
{
    m_opening.ask();
    m_thread.askToStop(why);
}

/// Cancels the opening first: LinkThread waits for its thread, and an opening may take minutes.
void LinkRun::stop(const QString& why)
{
    askToStop(why);
    m_thread.stop(why);
}

LinkThread::Settings LinkRun::threadSettings(const Settings& settings)
{
    LinkThread::Settings thread;
    thread.timing = timingOf(settings.address);
    thread.exchange.answer = qint64(settings.timeoutMs) * MILLISECOND;
    thread.exchange.echo = settings.echo;
    thread.exchange.seed = std::random_device()();
    thread.attempts = settings.attempts;
    thread.jobsAtLoss = settings.jobsAtLoss;
    thread.hold = qint64(settings.holdMs) * MILLISECOND;
    thread.firstPauseMs = settings.pauseMs;
    thread.longestPauseMs = settings.longestPauseMs;
    thread.reopensWhenSilent = settings.address.kind == LinkAddress::NETWORK;
    thread.openLink = settings.opening;
    if (!thread.openLink) {
        const LinkAddress address = settings.address;
        thread.openLink = [this, address] { return openLink(address, m_opening); };
    }
    return thread;
}

void LinkRun::start()
{
    m_thread.start();
}

void LinkRun::read(int job, const std::vector<ReadBlock>& blocks)
{
    m_thread.read(job, blocks);
}

void LinkRun::write(int job, const std::vector<ElementWrite>& elements)
{
    m_thread.write(job, elements);
}

void LinkRun::transfer(const RecipeJob& recipe)
{
    m_thread.transfer(recipe);
}

qint64 LinkRun::now() const
{
    return m_thread.now();
}
