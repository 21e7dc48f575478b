#include "threadedHost.h"

#include <QMutexLocker>

namespace {

enum { STATION = 1 };

QString word()
{
    return QLatin1String("MW");
}

KEY_ADDRESS keyAt(const char* area, int address, int count)
{
    KEY_ADDRESS key;
    key.station = STATION;
    key.regName = QLatin1String(area);
    key.addr = address;
    key.count = count;
    return key;
}

_RCP_VAR_PRO recordAt(int word, int count)
{
    _RCP_VAR_PRO record;
    record.station = STATION;
    record.regName = QLatin1String("MW");
    record.addr = ThreadedHost::RECIPE_ADDRESS + 2 * word; // apart, so that each is a block
    record.count = count;
    record.bufOffset = word;
    return record;
}

} // namespace

const DriverLibrary& ThreadedHost::driver()
{
    static const DriverLibrary loaded{QString(QLatin1String(KAKB_DRIVER_FILE))};
    return loaded;
}

ThreadedHost::ThreadedHost(ValueChangeCallBack callBack)
    : shared(RECIPE_UPLOAD_FLAG + 1), recipe(2 * RECIPE_WORDS), plc(STATION)
{
    start();
    driver().setAddrValueChangeCallBack(callBack);
    poll();
}

void ThreadedHost::start()
{
    char properties[] = "0#0#0#3#32";
    int status = -1;
    driver().initProperty(shared.data(), 0, recipe.data(), &status, properties, &mutex);
}

void ThreadedHost::poll() const
{
    QList<KEY_ADDRESS> keys;
    keys.append(keyAt("MW", 3000, 8));
    keys.append(keyAt("IW", 0, 4));
    keys.append(keyAt("QX", 0, 16));
    driver().addrMerge(keys);
}

void ThreadedHost::setRecipe() const
{
    QVector<_RCP_VAR_PRO> records;
    for (int word = 0; word < RECIPE_WORDS; word += 4)
        records.append(recordAt(word, 4));
    driver().setRcpAddress(records);
}

void ThreadedHost::setPage() const
{
    const QString page = QLatin1String("page");
    driver().setDriverPropertyPage(&page);
}

bool ThreadedHost::exchange()
{
    FRAME_PRO frame;
    if (driver().getSendFrame(&frame) == 0) return false;
    const Bytes answer = plc.answer(Bytes(frame.sendBuf, frame.sendBuf + frame.sendLen));
    QByteArray reply(reinterpret_cast<const char*>(answer.data()), int(answer.size()));
    QString errorText;
    driver().dealRcvFrame(reply, errorText);
    return true;
}

void ThreadedHost::write(int address, int value) const
{
    unsigned char bytes[2] = {static_cast<unsigned char>(value & 0xFF),
                              static_cast<unsigned char>(value >> 8 & 0xFF)};
    driver().setData(STATION, word(), address, 1, bytes, 0);
}

int ThreadedHost::read(int address) const
{
    unsigned char bytes[2] = {};
    driver().getData(STATION, word(), address, 1, bytes);
    return bytes[0] + bytes[1] * 256;
}

void ThreadedHost::readOnce(int address) const
{
    KEY_ADDRESS key = keyAt("MW", address, 2);
    driver().addConditionRead(key, 0);
}

void ThreadedHost::raise(RecipeFlag flag)
{
    QMutexLocker locker(&mutex);
    shared[flag] = 1;
}

bool ThreadedHost::isRaised(RecipeFlag flag)
{
    QMutexLocker locker(&mutex);
    return shared[flag] != 0;
}
