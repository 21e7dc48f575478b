#include "session/startedDriver.h"

#include "wire/protocolLimits.h"

#include "driver/addressText.h"
#include "plan/tag.h"

#include <QMutexLocker>

#include <algorithm>
#include <utility>

namespace {

// The changes that noteChange() collects. The driver's callback has no argument for the host's
// data. The driver calls it inside a call of the thread that uses the driver, so each thread has
// changes of its own: those of its link.
thread_local std::vector<NotedChange> notedChanges;

} // namespace

StartedDriver::StartedDriver(const DriverLibrary& driver, int attempts)
    : m_driver(driver), m_shared(RECIPE_UPLOAD_FLAG + 1), m_recipe(2 * RECIPE_WORDS + VALUE_BYTES)
{
    notedChanges.clear();
    QByteArray properties = QString(QLatin1String("%1#0#0#%2#%3"))
                                .arg(int(LINK_NUMBER))
                                .arg(attempts)
                                .arg(int(MOST_READ_REGISTERS))
                                .toLatin1();
    int status = 0;
    m_driver.setAddrValueChangeCallBack(noteChange);
    m_driver.initProperty(m_shared.data(), 0, m_recipe.data(), &status, properties.data(),
                          &m_mutex);
}

/// Makes the driver forget the borrowed memory: the driver outlives this object. A driver keeps its
/// place in a recipe also for its next start, so the recipe must be given up.
StartedDriver::~StartedDriver()
{
    int status = 0;
    giveUpAll();
    m_driver.setAddrValueChangeCallBack(nullptr);
    m_driver.initProperty(nullptr, 0, nullptr, &status, nullptr, nullptr);
    notedChanges.clear();
}

void StartedDriver::noteChange(int, int station, QString& area, int number)
{
    notedChanges.push_back({station, area, number});
}

/// Asks the driver twice. Without polled blocks the driver returns 0 once after several consecutive
/// writes or one-shot reads, although more of them wait.
bool StartedDriver::nextRequest(FRAME_PRO* frame)
{
    return m_driver.getSendFrame(frame) != 0 || m_driver.getSendFrame(frame) != 0;
}

int StartedDriver::dealRcvFrame(QByteArray& reply, QString& errorText)
{
    return m_driver.dealRcvFrame(reply, errorText);
}

int StartedDriver::poll(QList<KEY_ADDRESS> keys)
{
    return m_driver.addrMerge(keys);
}

void StartedDriver::giveUpAll()
{
    FRAME_PRO frame;
    QByteArray noReply;
    QString errorText;
    poll({});
    while (nextRequest(&frame)) {
        while (dealRcvFrame(noReply, errorText) == REPLY_RETRY) {
        }
    }
}

void StartedDriver::queueRead(KEY_ADDRESS key)
{
    m_driver.addConditionRead(key, ONE_SHOT);
}

void StartedDriver::queueWrite(int station, const QString& area, int number, QByteArray element)
{
    m_driver.setData(station, area, number, 1, reinterpret_cast<unsigned char*>(element.data()), 0);
}

QByteArray StartedDriver::value(int station, const QString& area, int number, int units) const
{
    QByteArray bytes(isBitArea(area) ? units : units * 2, '\0');
    m_driver.getData(station, area, number, units, reinterpret_cast<unsigned char*>(bytes.data()));
    return bytes;
}

std::vector<NotedChange> StartedDriver::takeChanges()
{
    return std::exchange(notedChanges, {});
}

int StartedDriver::setRecipe(QVector<_RCP_VAR_PRO> records, const QByteArray& bytes)
{
    const size_t kept = std::min(size_t(bytes.size()), m_recipe.size());
    m_recipe.clear();
    std::copy_n(bytes.constData(), kept, m_recipe.data());
    return m_driver.setRcpAddress(records);
}

void StartedDriver::raise(RecipeFlag flag)
{
    QMutexLocker locker(&m_mutex);
    m_shared.data()[flag] = 1;
}

bool StartedDriver::isRaised(RecipeFlag flag)
{
    QMutexLocker locker(&m_mutex);
    return m_shared.data()[flag] == 1;
}

QByteArray StartedDriver::recipeBytes(int count) const
{
    return QByteArray(reinterpret_cast<const char*>(m_recipe.data()),
                      std::min(count, 2 * RECIPE_WORDS));
}

QString StartedDriver::placesText(const VARIABLE& var) const
{
    const auto placeOf = [&](int number) {
        return var.regName + addressText(m_driver, var.regName, number);
    };
    QString text = placeOf(var.addr);
    if (var.count > 1) text += QLatin1String(" to ") + placeOf(var.addr + var.count - 1);
    return text + QString(QLatin1String(" of station %1")).arg(var.station);
}
