#include "propertyBench.h"

#include "modbusChecksum.h"

#include <new>
#include <random>

namespace {

enum { READ_INPUTS = 4, ECHOED = 6, FIRST_DATA = 3, BIT_MODE = -1 };

PropertyBench* current = nullptr;

void note(int context, int station, QString& name, int addr)
{
    current->told.push_back({context, station, name.toStdString(), addr});
    name.clear();
}

void renewDriver()
{
    driver.~Protocol();
    new (&driver) Protocol();
}

QByteArray noiseBytes(std::mt19937& random, int length)
{
    QByteArray out;
    for (int i = 0; i < length; ++i)
        out.append(static_cast<char>(random() & 255u));
    return out;
}

/// Nothing answers a broadcast or a frame without a request.
QByteArray goodReply(const FRAME_PRO& frame, std::mt19937& random, int stationShift)
{
    if (frame.recvLen <= 0 || frame.sendLen == 0) return QByteArray();
    QByteArray body(reinterpret_cast<const char*>(frame.sendBuf), ECHOED);
    body[0] = static_cast<char>(frame.sendBuf[0] + stationShift);
    if (frame.sendBuf[1] > READ_INPUTS) return frameWith(body);
    const int dataBytes = frame.recvLen - FIRST_DATA - 2;
    body.truncate(2);
    body.append(static_cast<char>(dataBytes & 255));
    return frameWith(body + noiseBytes(random, dataBytes));
}

QByteArray damaged(QByteArray reply, std::mt19937& random)
{
    if (reply.isEmpty()) return QByteArray(1, '\x55');
    const int at = static_cast<int>(random() % static_cast<unsigned>(reply.size()));
    reply[at] = static_cast<char>(reply.at(at) ^ (1 << random() % 8));
    return reply;
}

QByteArray cut(const QByteArray& reply, std::mt19937& random)
{
    if (reply.isEmpty()) return reply;
    return reply.left(static_cast<int>(random() % static_cast<unsigned>(reply.size())));
}

} // namespace

const char* nameOf(Reply reply)
{
    static const char* const names[] = {"good", "empty",         "damaged",
                                        "cut",  "other station", "random"};
    return names[static_cast<int>(reply)];
}

std::ostream& operator<<(std::ostream& out, Reply reply)
{
    return out << nameOf(reply);
}

PropertyBench::PropertyBench(int retryLimit, int mergeLimit)
    : m_shared(RECIPE_UPLOAD_FLAG + 1, 0), m_recipe(2 * RECIPE_WORDS, 0)
{
    current = this;
    renewDriver();
    intf_setAddrValueChangeCallBack(note);
    const std::string properties = std::to_string(CONTEXT) + "#0#0#" + std::to_string(retryLimit) +
                                   "#" + std::to_string(mergeLimit);
    QByteArray text = QByteArray::fromStdString(properties);
    int status = -1;
    intf_initProperty(m_shared.data(), 0, m_recipe.data(), &status, text.data(), &m_mutex);
}

PropertyBench::~PropertyBench()
{
    renewDriver();
    current = nullptr;
}

KEY_ADDRESS PropertyBench::key(int station, const QString& area, int addr, int count)
{
    KEY_ADDRESS made;
    made.station = station;
    made.regName = area;
    made.addr = addr;
    made.count = count;
    made.unitMode = area.endsWith(QLatin1Char('X')) ? int(BIT_MODE) : 0;
    return made;
}

int PropertyBench::poll(const std::vector<KEY_ADDRESS>& keys)
{
    QList<KEY_ADDRESS> list;
    for (const KEY_ADDRESS& one : keys)
        list.append(one);
    return intf_addrMerge(list);
}

void PropertyBench::write(int station, const char* area, int addr, int value, int varId)
{
    writeRun(station, area, addr, 1, value, varId);
}

void PropertyBench::writeRun(int station, const char* area, int addr, int count, int value,
                             int varId)
{
    const bool bits = area[1] == 'X';
    std::vector<unsigned char> bytes;
    for (int i = 0; i < count; ++i) {
        bytes.push_back(static_cast<unsigned char>((value + i) & (bits ? 1 : 255)));
        if (!bits) bytes.push_back(static_cast<unsigned char>((value + i) >> 8 & 255));
    }
    intf_setData(station, QString::fromLatin1(area), addr, count, bytes.data(), varId);
}

void PropertyBench::readOnce(int station, const char* area, int addr, int count, int varId)
{
    KEY_ADDRESS wanted = key(station, QString::fromLatin1(area), addr, count);
    intf_addConditionRead(wanted, varId);
}

int PropertyBench::setRecipe(const std::vector<_RCP_VAR_PRO>& records)
{
    QVector<_RCP_VAR_PRO> list;
    for (const _RCP_VAR_PRO& record : records)
        list.append(record);
    return intf_setRcpAddress(list);
}

void PropertyBench::raise(RecipeFlag flag)
{
    m_shared[flag] = 1;
}

bool PropertyBench::isRaised(RecipeFlag flag) const
{
    return m_shared[flag] != 0;
}

bool PropertyBench::transferUnderWay() const
{
    return isRaised(RECIPE_DOWNLOAD_FLAG) || isRaised(RECIPE_UPLOAD_FLAG);
}

int PropertyBench::answer(const FRAME_PRO& frame, Reply reply, unsigned noise)
{
    QByteArray bytes = replyTo(frame, reply, noise);
    return intf_dealRcvFrame(bytes, errorText);
}

QByteArray replyTo(const FRAME_PRO& frame, Reply reply, unsigned noise)
{
    std::mt19937 random(noise);
    switch (reply) {
    case Reply::GOOD:
        return goodReply(frame, random, 0);
    case Reply::DAMAGED:
        return damaged(goodReply(frame, random, 0), random);
    case Reply::CUT:
        return cut(goodReply(frame, random, 0), random);
    case Reply::OTHER_STATION:
        return goodReply(frame, random, 1);
    case Reply::RANDOM:
        return noiseBytes(random, static_cast<int>(random() % 300));
    default:
        return QByteArray();
    }
}
