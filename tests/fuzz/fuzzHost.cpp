#include "fuzzHost.h"

#include "frameRules.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace {

enum { SHARED_BYTES = RECIPE_UPLOAD_FLAG + 1, SHARED_FILL = 0x5A, NEIGHBOUR = 5 };

QMutex* theHosts;

bool isFree(QMutex& mutex)
{
    if (!mutex.tryLock()) return false;
    mutex.unlock();
    return true;
}

/// Does what a host may do: takes its own mutex and reads values, some of units not yet known, for
/// which the cache grows under the driver's feet.
void note(int context, int station, QString& name, int addr)
{
    require(isFree(*theHosts), "the host's mutex is free while the host is told");
    require(isFree(driver.queueMutex), "the driver's mutex is free while the host is told");
    require(context == driver.callbackContext || context == 0 || context == -1,
            "the host is told in its context");
    unsigned char value[4];
    intf_getData(station, name, addr, 1, value);
    if (addr < 100000 && addr >= 0) intf_getData(station, name, addr + NEIGHBOUR, 1, value);
    name.append(QLatin1Char('!'));
}

void renewDriver()
{
    driver.~Protocol();
    new (&driver) Protocol();
}

size_t valueBytes(const QString& area, int count)
{
    return size_t(std::max(count, 0)) * (isWordName(area) ? 2 : 1);
}

} // namespace

FuzzHost::FuzzHost() : m_shared(SHARED_BYTES, SHARED_FILL), m_recipe(2 * RECIPE_WORDS)
{
    renewDriver();
    theHosts = &m_mutex;
    intf_setAddrValueChangeCallBack(note);
}

FuzzHost::~FuzzHost()
{
    renewDriver();
}

void FuzzHost::initialise(const std::string& properties)
{
    std::vector<char> text(properties.begin(), properties.end());
    text.push_back('\0');
    int status = -1;
    const int result =
        intf_initProperty(m_shared.data(), 3, m_recipe.data(), &status, text.data(), &m_mutex);
    require(result == 1 && status == 0, "initialisation always succeeds");
    require(driver.readList.isEmpty() && driver.writeList.isEmpty() &&
                driver.condReadList.isEmpty() && driver.frameQueue.isEmpty() &&
                driver.dataAreas.isEmpty(),
            "initialisation drops plan, queues and cache");
}

void FuzzHost::initialise(int localOnly, int retryLimit, int mergeLimit)
{
    initialise(std::to_string(CONTEXT) + "#" + std::to_string(localOnly) + "#0#" +
               std::to_string(retryLimit) + "#" + std::to_string(mergeLimit));
}

bool FuzzHost::request(FRAME_PRO& frame)
{
    const int result = intf_getSendFrame(&frame);
    require(result == 0 || result == 1, "a frame is offered or not");
    require((result == 1) == !driver.frameQueue.isEmpty(), "what is queued is offered");
    require(driver.frameQueue.size() <= 1, "one request at a time");
    if (result == 1) requireSoundFrame(frame);
    return result == 1;
}

int FuzzHost::answer(QByteArray reply)
{
    const bool pending = !driver.frameQueue.isEmpty();
    const FRAME_PRO frame = pending ? driver.frameQueue.at(0) : FRAME_PRO();
    const int failures = driver.failCount + 1;
    const bool accepted = pending && answers(frame, reply);
    const QString failure = QString::number(reply.size()) + QLatin1Char(',') +
                            QString::number(frame.var.station) + QLatin1Char(',') +
                            QString::number(frame.var.addr) + QLatin1Char(',') + frame.var.regName;
    QString errorText = QLatin1String("left from before");
    const int result = intf_dealRcvFrame(reply, errorText);
    if (!pending)
        require(result == REPLY_NOTHING_PENDING, "nothing pending takes no reply");
    else if (accepted)
        require(result == REPLY_ACCEPTED, "a reply is accepted for its length and checksum");
    else
        require(result == (failures < driver.retryLimit ? REPLY_RETRY : REPLY_GIVEN_UP),
                "a request is given up at the retry limit");
    require(errorText == (result == REPLY_GIVEN_UP ? failure : QString()), "a give-up is named");
    require(driver.frameQueue.isEmpty() == (result != REPLY_RETRY), "only a retry stays queued");
    return result;
}

QByteArray FuzzHost::read(int station, const QString& area, int address, int count)
{
    const size_t size = valueBytes(area, count);
    const std::unique_ptr<unsigned char[]> out(new unsigned char[size]());
    require(intf_getData(station, area, address, count, out.get()) == 1, "reading returns 1");
    return QByteArray(reinterpret_cast<const char*>(out.get()), int(size));
}

void FuzzHost::write(int station, const QString& area, int address, int count,
                     const QByteArray& values)
{
    const size_t size = valueBytes(area, count);
    const std::unique_ptr<unsigned char[]> in(new unsigned char[size]());
    std::memcpy(in.get(), values.constData(), std::min(size, size_t(values.size())));
    require(intf_setData(station, area, address, count, in.get(), 9) == 1, "writing returns 1");
    require(driver.writeList.size() <= 513, "the write queue holds 513 writes");
}

void FuzzHost::raise(RecipeFlag flag)
{
    QMutexLocker locker(&m_mutex);
    m_shared[flag] = 1;
}

void FuzzHost::lower(RecipeFlag flag)
{
    QMutexLocker locker(&m_mutex);
    m_shared[flag] = 0;
}

bool FuzzHost::isRaised(RecipeFlag flag)
{
    QMutexLocker locker(&m_mutex);
    return m_shared[flag] == 1;
}

void FuzzHost::requireUntouched()
{
    const auto flags = m_shared.begin() + RECIPE_DOWNLOAD_FLAG;
    require(std::all_of(m_shared.begin(), flags, [](unsigned char b) { return b == SHARED_FILL; }),
            "of the host's block only the flags change");
    require(isFree(m_mutex) && isFree(driver.queueMutex), "no mutex stays taken");
}
