#include "driverModel.h"

#include "branches.h"
#include "modelAddresses.h"
#include "modelMerging.h"

namespace model {

namespace {

enum { PROPERTY_PARTS = 5, MERGED_READ_ID = 4, BITS_IN_GROUP = 16, BLOCKS_OF_BITS = 8 };

} // namespace

int DriverModel::initProperty(HostMemory* flags, Bytes* recipe, const std::string* text)
{
    const std::vector<std::string> parts = splitAt(text != nullptr ? *text : std::string(), '#');
    reach(parts.size() < PROPERTY_PARTS ? Branch::INIT_KEEPS_PROPERTIES
                                        : Branch::INIT_TAKES_PROPERTIES);
    if (parts.size() >= PROPERTY_PARTS) {
        decimal(parts[0], m_context);
        decimal(parts[1], m_localOnly);
        decimal(parts[3], m_retryLimit);
        decimal(parts[4], m_mergeLimit);
    }
    if (m_pending) reach(Branch::INIT_DROPS_FRAME);
    m_flags = flags;
    m_recipeBuffer = recipe;
    m_reads.clear();
    m_writes.clear();
    m_oneShots.clear();
    m_cache.clear();
    m_pending.reset();
    m_kind = Kind::IDLE;
    m_priorityCount = 0;
    m_failCount = 0;
    m_failed = false;
    return 1;
}

int DriverModel::addrMerge(const std::vector<Key>& keys)
{
    m_cache.clearMarks();
    for (const Key& key : keys)
        m_cache.mark(key);
    m_reads.clear();
    for (const Key& block : planReads(keys, m_mergeLimit))
        m_reads.push_back({MERGED_READ_ID, block.station, block.area, block.addr, block.count, {}});
    return static_cast<int>(m_reads.size());
}

int DriverModel::addConditionRead(const Key& key, int varId)
{
    const Area* area = findArea(key.area);
    if (area == nullptr) {
        reach(Branch::ONE_SHOT_UNKNOWN_AREA);
        return 1;
    }
    const bool bitKey = key.unitMode == -1;
    const int unitCount = area->words ? 1 : BITS_IN_GROUP;
    for (const Key& piece : cut(key, bitKey ? m_mergeLimit * BLOCKS_OF_BITS : m_mergeLimit)) {
        m_lastOneShot = {varId, piece.station, piece.area, piece.addr, piece.count * unitCount, {}};
        m_oneShots.add(m_lastOneShot);
    }
    return 1;
}

int DriverModel::setRcpAddress(const std::vector<RecipeRecord>& records)
{
    return m_recipes.replace(records, m_context, m_mergeLimit);
}

Bytes DriverModel::getData(int station, const std::string& area, int addr, int count)
{
    return m_cache.read(station, area, addr, count);
}

int DriverModel::setData(int station, const std::string& areaName, int addr, const Bytes& values,
                         int varId)
{
    const Area* area = findArea(areaName);
    if (area == nullptr) {
        reach(Branch::WRITE_UNKNOWN_AREA);
        return 1;
    }
    const size_t width = area->words ? 2 : 1;
    const int count = static_cast<int>(values.size() / width);
    if (m_localOnly != 0) reach(Branch::WRITE_LOCAL_ONLY);
    for (int i = 0; i < count && m_localOnly == 0; ++i) {
        const auto first = values.begin() + static_cast<std::ptrdiff_t>(width) * i;
        const Bytes value(first, first + static_cast<std::ptrdiff_t>(width));
        m_writes.add({varId, station, areaName, addr + i, 1, value});
    }
    m_cache.write(station, areaName, addr, count, values, teller());
    return 1;
}

std::vector<Notification> DriverModel::takeNotifications()
{
    std::vector<Notification> taken;
    taken.swap(m_notifications);
    return taken;
}

void DriverModel::tell(int context, int station, const std::string& name, int addr)
{
    if (!m_callbackSet) {
        reach(Branch::CALLBACK_NOT_SET);
        return;
    }
    reach(Branch::CALLBACK_TOLD);
    Bytes seen = getData(station, name, addr, 1);
    const Bytes beside = getData(station, name, neighbourOf(addr), 1);
    seen.insert(seen.end(), beside.begin(), beside.end());
    m_notifications.push_back({context, station, name, addr, seen});
}

Cache::Changed DriverModel::teller()
{
    return [this](int station, const std::string& area, int addr) {
        tell(m_context, station, area, addr);
    };
}

} // namespace model
