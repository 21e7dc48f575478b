#include "machine/stationLinks.h"

#include "machine/errorLines.h"

#include <algorithm>

StationLinks::StationLinks(LinkSurroundings surroundings)
    : m_surroundings(std::move(surroundings)),
      m_copies(m_surroundings.driverFile),
      m_audit(m_surroundings.events, m_surroundings.clock,
              [](const QByteArray& line) { ErrorLines::standard().put(line); })
{
}

StationLinks::~StationLinks()
{
    stop(QLatin1String("the station stopped"));
}

/// All that can fail is done first, and nobody sees it.
void StationLinks::apply(const std::vector<LinkConfig>& configs)
{
    Links links;
    Links added;
    for (const LinkConfig& config : configs) {
        const std::shared_ptr<MachineLink> old = find(config.name);
        if (old && old->canRun() && old->config() == config) {
            links.push_back(old);
            continue;
        }
        links.push_back(std::make_shared<MachineLink>(config, m_surroundings, m_copies, m_audit));
        added.push_back(links.back());
    }
    for (const std::shared_ptr<MachineLink>& link : links)
        link->keepFrames(FrameLog::mostOfEach(links.size()));
    Links removed = links;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::swap(removed, m_links);
    }
    removed.erase(std::remove_if(removed.begin(), removed.end(),
                                 [&links](const std::shared_ptr<MachineLink>& old) {
                                     return std::find(links.begin(), links.end(), old) !=
                                            links.end();
                                 }),
                  removed.end());
    stop(removed, QLatin1String("the link's configuration was changed or taken out"));
    for (const std::shared_ptr<MachineLink>& link : added)
        link->start();
}

void StationLinks::stop(const QString& why)
{
    stop(all(), why);
}

void StationLinks::stop(const Links& links, const QString& why)
{
    for (const std::shared_ptr<MachineLink>& link : links)
        link->askToStop(why);
    for (const std::shared_ptr<MachineLink>& link : links)
        link->stop(why);
}

std::vector<std::shared_ptr<MachineLink>> StationLinks::all() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_links;
}

std::shared_ptr<MachineLink> StationLinks::find(const QString& name) const
{
    for (const std::shared_ptr<MachineLink>& link : all()) {
        if (link->name() == name) return link;
    }
    return nullptr;
}
