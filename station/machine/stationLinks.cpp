#include "machine/stationLinks.h"

#include <algorithm>

StationLinks::StationLinks(LinkSurroundings surroundings) : m_surroundings(std::move(surroundings))
{
}

StationLinks::~StationLinks()
{
    stop(QLatin1String("the station stopped"));
}

void StationLinks::apply(const std::vector<LinkConfig>& configs)
{
    std::vector<std::shared_ptr<MachineLink>> links;
    std::vector<std::shared_ptr<MachineLink>> added;
    for (const LinkConfig& config : configs) {
        const std::shared_ptr<MachineLink> old = find(config.name);
        if (old && old->config() == config) {
            links.push_back(old);
            continue;
        }
        links.push_back(std::make_shared<MachineLink>(config, m_surroundings));
        added.push_back(links.back());
    }
    std::vector<std::shared_ptr<MachineLink>> before = links;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::swap(before, m_links);
    }
    for (const std::shared_ptr<MachineLink>& old : before) {
        if (std::find(links.begin(), links.end(), old) == links.end())
            old->stop(QLatin1String("the link was taken out of the configuration"));
    }
    for (const std::shared_ptr<MachineLink>& link : added)
        link->start();
}

void StationLinks::stop(const QString& why)
{
    for (const std::shared_ptr<MachineLink>& link : all())
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
