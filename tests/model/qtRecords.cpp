#include "qtRecords.h"

#include <algorithm>

namespace model {

QString qtText(const std::string& text)
{
    return QString::fromUtf8(text.c_str());
}

std::string plainText(const QString& text)
{
    return text.toStdString();
}

KEY_ADDRESS qtKey(const Key& key)
{
    KEY_ADDRESS result;
    result.station = key.station;
    result.regName = qtText(key.area);
    result.addr = key.addr;
    result.unitMode = key.unitMode;
    result.count = key.count;
    return result;
}

Frame plainFrame(const FRAME_PRO& frame)
{
    const int sendLen = std::clamp<int>(frame.sendLen, 0, FRAME_BYTES);
    Frame result;
    result.bytes.assign(frame.sendBuf, frame.sendBuf + sendLen);
    result.recvLen = frame.recvLen;
    result.dataStart = frame.dataStart;
    result.itemCount = frame.itemCount;
    result.var = {frame.var.varId, frame.var.station, plainText(frame.var.regName),
                  frame.var.addr,  frame.var.count,   {}};
    result.var.value.assign(frame.var.value, frame.var.value + VALUE_BYTES);
    return result;
}

_RCP_VAR_PRO qtRecord(const RecipeRecord& record)
{
    _RCP_VAR_PRO result;
    result.linkNo = record.linkNo;
    result.station = record.station;
    result.regName = qtText(record.area);
    result.addr = record.addr;
    result.count = record.count;
    result.bufOffset = record.offset;
    return result;
}

} // namespace model
