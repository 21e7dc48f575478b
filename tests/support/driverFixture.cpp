#include "driverFixture.h"

#include "hexText.h"
#include "modbusChecksum.h"

#include <new>

namespace {

Notifications noted;

void note(int context, int station, QString& name, int addr)
{
    noted.push_back({context, station, name.toStdString(), addr});
}

int findUnit(int station, const QString& regName, int address)
{
    for (int i = 0; i < int(driver.dataAreas.size()); ++i) {
        const _DATA_& unit = driver.dataAreas.at(i);
        if (unit.station == station && unit.regName == regName && unit.address == address) return i;
    }
    return -1;
}

} // namespace

std::ostream& operator<<(std::ostream& out, const Notification& n)
{
    return out << "(" << n.context << ", " << n.station << ", " << n.name << ", " << n.addr << ")";
}

DriverTest::DriverTest() : shared(SHARED_BYTES, 0), recipe(RECIPE_BYTES, 0)
{
    driver.~Protocol();
    new (&driver) Protocol();
    intf_setAddrValueChangeCallBack(note);
    noted.clear();
}

DriverTest::~DriverTest()
{
    driver.~Protocol();
    new (&driver) Protocol();
}

void DriverTest::initialise(int retryLimit, int mergeLimit, int localOnly)
{
    QByteArray properties = text("%1#%2#0#%3#%4")
                                .arg(CONTEXT)
                                .arg(localOnly)
                                .arg(retryLimit)
                                .arg(mergeLimit)
                                .toLatin1();
    int status = -1;
    ASSERT_EQ(1, intf_initProperty(shared.data(), 0, recipe.data(), &status, properties.data(),
                                   &hostMutex));
}

Notifications DriverTest::takeNotifications()
{
    Notifications taken;
    taken.swap(noted);
    return taken;
}

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray out;
    for (int value : values)
        out.append(static_cast<char>(value));
    return out;
}

KEY_ADDRESS key(int station, const char* regName, int addr, int count, int unitMode)
{
    KEY_ADDRESS made;
    made.station = station;
    made.regName = text(regName);
    made.addr = addr;
    made.count = count;
    made.unitMode = unitMode;
    return made;
}

VARIABLE variable(int station, const char* regName, int addr, int count,
                  std::initializer_list<int> values)
{
    VARIABLE made;
    made.station = station;
    made.regName = text(regName);
    made.addr = addr;
    made.count = count;
    size_t i = 0;
    for (int value : values)
        made.value[i++] = static_cast<unsigned char>(value);
    return made;
}

_RCP_VAR_PRO recipeVariable(int linkNo, int station, const char* regName, int addr, int count,
                            int bufOffset)
{
    _RCP_VAR_PRO made;
    made.linkNo = linkNo;
    made.station = station;
    made.regName = text(regName);
    made.addr = addr;
    made.count = count;
    made.bufOffset = bufOffset;
    return made;
}

std::string hex(const FRAME_PRO& frame)
{
    return hexOf(std::vector<unsigned char>(frame.sendBuf, frame.sendBuf + frame.sendLen));
}

std::string hex(const QByteArray& frame)
{
    return hexOf(frame);
}

QByteArray withChecksum(std::initializer_list<int> body)
{
    return frameWith(bytes(body));
}

_DATA_ cachedUnit(int station, const char* regName, int address)
{
    const int index = findUnit(station, text(regName), address);
    EXPECT_GE(index, 0) << "no unit " << station << " " << regName << " " << address;
    return index < 0 ? _DATA_() : driver.dataAreas.at(index);
}

int putUnit(int station, const char* regName, int address, unsigned readValue,
            unsigned monitorFlags, unsigned bitMonitorMask)
{
    int index = findUnit(station, text(regName), address);
    if (index < 0) {
        _DATA_ unit;
        unit.station = station;
        unit.regName = text(regName);
        unit.address = address;
        driver.dataAreas.append(unit);
        index = int(driver.dataAreas.size()) - 1;
    }
    _DATA_& unit = driver.dataAreas[index];
    for (int i = 0; i < 4; ++i)
        unit.readImage[i] = static_cast<unsigned char>(readValue >> (8 * i) & 0xFFu);
    unit.monitorFlags = monitorFlags;
    unit.bitMonitorMask = bitMonitorMask;
    return index;
}
