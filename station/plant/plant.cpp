#include "plant/plantThread.h"

#include <map>

std::vector<EdgeDevice> plantDevices(const std::vector<LinkConfig>& links)
{
    std::vector<EdgeDevice> devices;
    for (const LinkConfig& link : links) {
        std::map<int, EdgeDevice> ofStations;
        for (const Tag& tag : link.tags) {
            EdgeDevice& device = ofStations[tag.station];
            device.link = link.name;
            device.station = tag.station;
            device.tags.push_back(tag);
        }
        for (auto& [station, device] : ofStations)
            devices.push_back(std::move(device));
    }
    return devices;
}

Plant::Plant(const PlantSettings& settings, const PlantSurroundings& surroundings)
    : m_thread(std::make_unique<Thread>(settings, surroundings))
{
}

Plant::~Plant() = default;

SampleQueue& Plant::queue()
{
    return m_thread->queue();
}

void Plant::setDevices(std::vector<EdgeDevice> devices)
{
    m_thread->setDevices(std::move(devices));
}

void Plant::start(SampleLog* log)
{
    m_thread->start(log);
}

void Plant::stop()
{
    m_thread->stop();
}

std::vector<PlantStanding> Plant::standings() const
{
    return m_thread->standings();
}
