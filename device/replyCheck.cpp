#include "replyCheck.h"

#include "checksum.h"
#include "driverState.h"

enum { BYTES_PER_VARIABLE = 4 };

int check_rcv_data(const unsigned char* bytes, const QList<VARIABLE>& variables, int len)
{
    Q_UNUSED(variables);
    if (driver.frameQueue.isEmpty()) return REPLY_REJECTED;
    const FRAME_PRO& pending = driver.frameQueue.at(0);
    if (len == 0 && pending.recvLen == 0) return REPLY_TO_WRITE;
    if (len != pending.recvLen || len < CHECKSUM_BYTES) return REPLY_REJECTED;

    const int crcAt = len - CHECKSUM_BYTES;
    const unsigned crc = computate_check(bytes, static_cast<unsigned short>(crcAt));
    if (bytes[crcAt + 1] != crc >> 8 || bytes[crcAt] != (crc & 0xFFu)) return REPLY_REJECTED;
    return pending.itemCount != 0 ? REPLY_TO_READ : REPLY_TO_WRITE;
}

int allMix_GetDataStartPosition(const QByteArray& reply, const QList<VARIABLE>& variables, int n)
{
    Q_UNUSED(reply);
    Q_UNUSED(variables);
    if (driver.frameIndex < 0 || driver.frameIndex >= driver.frameQueue.size()) return 0;
    const int start = driver.frameQueue.at(driver.frameIndex).dataStart;
    const int before = qMin(qMin(driver.varsInFrame, n), int(driver.curReadList.size()));
    return before < 1 ? start : start + before * BYTES_PER_VARIABLE;
}

int allMix_GetRecvLenFromReadList(const QList<VARIABLE>& variables)
{
    Q_UNUSED(variables);
    return 0;
}
