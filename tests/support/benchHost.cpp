#include "benchHost.h"

#include <QMutexLocker>

namespace {

enum { BIT_MODE = -1, WORD_MODE = 0 };

// The callback is a plain function, so the host that it notes for is global.
BenchHost* current = nullptr;

void note(int context, int station, QString& area, int number)
{
    if (current != nullptr) current->told.push_back({context, station, area.toStdString(), number});
    area.clear(); // is the callee's to change
}

bool isBits(const Units& units)
{
    return units.area.size() > 1 && units.area[1] == 'X';
}

} // namespace

KEY_ADDRESS keyOf(const Units& units)
{
    KEY_ADDRESS key;
    key.station = units.station;
    key.regName = QString::fromStdString(units.area);
    key.addr = units.first;
    key.count = units.count;
    key.unitMode = isBits(units) ? int(BIT_MODE) : int(WORD_MODE);
    return key;
}

std::ostream& operator<<(std::ostream& out, const Told& told)
{
    return out << "(" << told.context << ", " << told.station << ", " << told.area << ", "
               << told.number << ")";
}

QByteArray requestOf(const FRAME_PRO& frame)
{
    return QByteArray(reinterpret_cast<const char*>(frame.sendBuf), frame.sendLen);
}

BenchHost::BenchHost(const DriverFunctions& functions, const BenchSettings& settings)
    : driver(functions),
      shared(RECIPE_UPLOAD_FLAG + 1),
      recipe(2 * size_t(settings.recipeWords)),
      m_properties(std::to_string(CONTEXT) + "#0#0#" + std::to_string(settings.retryLimit) + "#" +
                   std::to_string(settings.mergeLimit))
{
    current = this;
    start();
    driver.setAddrValueChangeCallBack(settings.callBack != nullptr ? settings.callBack : note);
}

BenchHost::~BenchHost()
{
    current = nullptr;
    driver.setAddrValueChangeCallBack(nullptr);
    driver.initProperty(nullptr, 0, nullptr, nullptr, nullptr, nullptr);
}

void BenchHost::start()
{
    std::string properties = m_properties;
    int status = -1;
    driver.initProperty(shared.data(), 0, recipe.data(), &status, properties.data(), &mutex);
}

int BenchHost::poll(const std::vector<Units>& all) const
{
    QList<KEY_ADDRESS> keys;
    for (const Units& units : all)
        keys.append(keyOf(units));
    return driver.addrMerge(keys);
}

void BenchHost::write(const Units& units, const std::vector<int>& values, int id) const
{
    std::vector<unsigned char> bytes;
    for (const int value : values) {
        bytes.push_back(static_cast<unsigned char>(value & 255));
        if (!isBits(units)) bytes.push_back(static_cast<unsigned char>(value >> 8 & 255));
    }
    driver.setData(units.station, QString::fromStdString(units.area), units.first, units.count,
                   bytes.data(), id);
}

void BenchHost::readOnce(const Units& units, int id) const
{
    KEY_ADDRESS key = keyOf(units);
    driver.addConditionRead(key, id);
}

std::vector<int> BenchHost::read(const Units& units) const
{
    const size_t width = isBits(units) ? 1 : 2;
    std::vector<unsigned char> bytes(width * size_t(units.count));
    driver.getData(units.station, QString::fromStdString(units.area), units.first, units.count,
                   bytes.data());
    std::vector<int> values;
    for (size_t at = 0; at < bytes.size(); at += width)
        values.push_back(bytes[at] + (width == 2 ? bytes[at + 1] * 256 : 0));
    return values;
}

int BenchHost::setRecipe(const std::vector<Units>& records) const
{
    QVector<_RCP_VAR_PRO> list;
    int offset = 0;
    for (const Units& units : records) {
        _RCP_VAR_PRO record;
        record.linkNo = CONTEXT;
        record.station = units.station;
        record.regName = QString::fromStdString(units.area);
        record.addr = units.first;
        record.count = units.count;
        record.bufOffset = offset;
        offset += units.count;
        list.append(record);
    }
    return driver.setRcpAddress(list);
}

int BenchHost::recipeWord(int at) const
{
    const size_t byte = 2 * static_cast<size_t>(at);
    return recipe[byte] | recipe[byte + 1] << 8;
}

void BenchHost::setRecipeWord(int at, int value)
{
    const size_t byte = 2 * static_cast<size_t>(at);
    recipe[byte] = static_cast<unsigned char>(value & 255);
    recipe[byte + 1] = static_cast<unsigned char>(value >> 8 & 255);
}

void BenchHost::raise(RecipeFlag flag)
{
    QMutexLocker locker(&mutex);
    shared[flag] = 1;
}

bool BenchHost::isRaised(RecipeFlag flag) const
{
    QMutexLocker locker(&mutex);
    return shared[flag] != 0;
}
