#include "panel.h"

#include <QMutexLocker>

namespace {

Panel* current = nullptr;

void note(int context, int station, QString& area, int number)
{
    if (current != nullptr) current->told.push_back({context, station, area.toStdString(), number});
}

const DriverLibrary& library()
{
    static const DriverLibrary loaded(QString::fromLatin1(KAKB_DRIVER_FILE));
    return loaded;
}

} // namespace

Panel::Panel(int retryLimit)
    : m_driver(library()), m_shared(RECIPE_UPLOAD_FLAG + 1, 0), m_recipe(2 * RECIPE_WORDS, 0)
{
    current = this;
    std::string text = std::to_string(CONTEXT) + "#0#0#" + std::to_string(retryLimit) + "#" +
                       std::to_string(MERGE_LIMIT);
    int status = -1;
    m_driver.initProperty(m_shared.data(), 0, m_recipe.data(), &status, text.data(), &m_mutex);
    m_driver.setAddrValueChangeCallBack(note);
}

Panel::~Panel()
{
    current = nullptr;
    int status = -1;
    m_driver.initProperty(nullptr, 0, nullptr, &status, nullptr, nullptr);
}

bool Panel::isBitArea(const char* area)
{
    return area[1] == 'X';
}

int Panel::poll(const std::vector<Units>& all)
{
    QList<KEY_ADDRESS> keys;
    for (const Units& units : all) {
        KEY_ADDRESS key;
        key.station = units.station;
        key.regName = QString::fromLatin1(units.area);
        key.addr = units.first;
        key.count = units.count;
        key.unitMode = isBitArea(units.area) ? -1 : 0;
        keys.append(key);
    }
    return m_driver.addrMerge(keys);
}

void Panel::write(const Units& units, const std::vector<int>& values, int id)
{
    std::vector<unsigned char> bytes;
    for (const int value : values) {
        bytes.push_back(static_cast<unsigned char>(value & 255));
        if (!isBitArea(units.area)) bytes.push_back(static_cast<unsigned char>(value >> 8));
    }
    m_driver.setData(units.station, QString::fromLatin1(units.area), units.first, units.count,
                     bytes.data(), id);
}

void Panel::readOnce(const Units& units, int id)
{
    KEY_ADDRESS key;
    key.station = units.station;
    key.regName = QString::fromLatin1(units.area);
    key.addr = units.first;
    key.count = isBitArea(units.area) ? 1 : units.count;
    key.unitMode = isBitArea(units.area) ? -1 : 0;
    m_driver.addConditionRead(key, id);
}

void Panel::setRecipe(const std::vector<Units>& records)
{
    QVector<_RCP_VAR_PRO> list;
    int offset = 0;
    for (const Units& units : records) {
        _RCP_VAR_PRO record;
        record.linkNo = CONTEXT;
        record.station = units.station;
        record.regName = QString::fromLatin1(units.area);
        record.addr = units.first;
        record.count = units.count;
        record.bufOffset = offset;
        offset += units.count;
        list.append(record);
    }
    m_driver.setRcpAddress(list);
}

void Panel::raise(RecipeFlag flag)
{
    QMutexLocker locker(&m_mutex);
    m_shared[flag] = 1;
}

bool Panel::transferUnderWay()
{
    QMutexLocker locker(&m_mutex);
    return m_shared[RECIPE_DOWNLOAD_FLAG] != 0 || m_shared[RECIPE_UPLOAD_FLAG] != 0;
}

int Panel::recipeWord(int at) const
{
    const size_t byte = 2 * static_cast<size_t>(at);
    return m_recipe[byte] | m_recipe[byte + 1] << 8;
}

void Panel::setRecipeWord(int at, int value)
{
    const size_t byte = 2 * static_cast<size_t>(at);
    m_recipe[byte] = static_cast<unsigned char>(value & 255);
    m_recipe[byte + 1] = static_cast<unsigned char>(value >> 8);
}

bool Panel::nextFrame(FRAME_PRO& frame)
{
    return m_driver.getSendFrame(&frame) == 1;
}

int Panel::takeReply(QByteArray reply)
{
    return m_driver.dealRcvFrame(reply, m_errorText);
}

int Panel::shown(int station, const char* area, int number)
{
    unsigned char bytes[2] = {0, 0};
    m_driver.getData(station, QString::fromLatin1(area), number, 1, bytes);
    return bytes[0] | bytes[1] << 8;
}
