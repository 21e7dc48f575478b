#include "session/linkRun.h"

#include "links/openLink.h"
#include "plan/wireCost.h"
#include "session/startedDriver.h"
#include "wire/protocolLimits.h"
#include "wire/timeUnits.h"

#include <random>

namespace {

std::vector<ReadBlock> plannedBlocks(const LinkRun::Settings& settings,
                                     const std::vector<Tag>& tags)
{
    const WireCost cost = wireCost(timingOf(settings.address), settings.turnaroundUs);
    const auto plan = settings.reading == LinkRun::CYCLIC ? planReads : shortestReads;
    return plan(tags, cost, MOST_READ_REGISTERS, settings.mostGap);
}

} // namespace

LinkRun::LinkRun(const DriverLibrary& driver, const Settings& settings,
                 const std::vector<Tag>& tags, LinkSink& sink)
    : m_blocks(plannedBlocks(settings, tags)), m_thread(driver, threadSettings(settings), sink)
{
    if (settings.reading == CYCLIC)
        m_thread.poll(tags, m_blocks);
    else
        m_thread.know(tags, m_blocks);
}

/// Cancels the opening first: the destructor of LinkThread waits for the thread, and an opening may
/// take minutes.
LinkRun::~LinkRun()
{
    m_opening.ask();
}

LinkThread::Settings LinkRun::threadSettings(const Settings& settings)
{
    LinkThread::Settings thread;
    thread.timing = timingOf(settings.address);
    thread.exchange.answer = qint64(settings.timeoutMs) * MILLISECOND;
    thread.exchange.echo = settings.echo;
    thread.exchange.seed = std::random_device()();
    thread.attempts = settings.attempts;
    thread.firstPauseMs = settings.pauseMs;
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
