#include "benchHost.h"

namespace {

enum { BYTES_OF_PROPERTIES = 16, READ_HOLDING_REGISTERS = 3 };

void ignoreChange(int, int, QString&, int) {}

} // namespace

const QString& markerWords()
{
    static const QString name = QString::fromLatin1("MW");
    return name;
}

void restartDriver()
{
    char properties[BYTES_OF_PROPERTIES] = "0#0#0#3#125";
    int status = 0;
    intf_initProperty(nullptr, 0, nullptr, &status, properties, nullptr);
    intf_setAddrValueChangeCallBack(ignoreChange);
    QList<KEY_ADDRESS> nothing;
    intf_addrMerge(nothing);
}

void pollBlocks(int blocks, int words)
{
    QList<KEY_ADDRESS> keys;
    for (int i = 0; i < blocks; ++i) {
        KEY_ADDRESS key;
        key.station = STATION;
        key.regName = markerWords();
        key.addr = FIRST_WORD + i * words;
        key.count = words;
        keys.append(key);
    }
    intf_addrMerge(keys);
}

void cacheOtherUnits(int units)
{
    unsigned char value[2];
    for (int i = 0; i < units; ++i)
        intf_getData(NOTED_STATION, markerWords(), i, 1, value);
}

unsigned short bitwiseChecksum(const unsigned char* bytes, int length)
{
    unsigned crc = 0xFFFF;
    for (int i = 0; i < length; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1u) != 0 ? (crc >> 1) ^ 0xA001u : crc >> 1;
    }
    return static_cast<unsigned short>(crc);
}

QByteArray closedFrame(std::initializer_list<int> head, int words, int value)
{
    QByteArray frame;
    for (int byte : head)
        frame.append(static_cast<char>(byte));
    for (int i = 0; i < words; ++i) {
        frame.append(static_cast<char>(value >> 8));
        frame.append(static_cast<char>(value & 0xFF));
    }
    const unsigned crc = bitwiseChecksum(reinterpret_cast<const unsigned char*>(frame.constData()),
                                         int(frame.size()));
    frame.append(static_cast<char>(crc & 0xFFu));
    frame.append(static_cast<char>(crc >> 8));
    return frame;
}

QByteArray readReply(int words, int value)
{
    return closedFrame({STATION, READ_HOLDING_REGISTERS, 2 * words}, words, value);
}

bool exchange(FRAME_PRO& frame, QByteArray& reply, QString& errorText)
{
    return intf_getSendFrame(&frame) == 1 && intf_dealRcvFrame(reply, errorText) == REPLY_ACCEPTED;
}
