#include "driverState.h"
#include "wrapAround.h"

enum { PROPERTY_COUNT = 5, BITS_PER_LIMIT_UNIT = 8 };

/// The five numbers are taken together or not at all.
static void readProperties(const char* text)
{
    const QStringList parts = QString::fromLatin1(text).split(QLatin1Char('#'));
    if (parts.size() < PROPERTY_COUNT) return;
    driver.callbackContext = parts.at(0).toInt();
    driver.localOnly = parts.at(1).toInt();
    driver.propC = parts.at(2).toInt();
    driver.retryLimit = parts.at(3).toInt();
    driver.mergeLimit = parts.at(4).toInt();
}

int intf_initProperty(unsigned char* shared, int arg, unsigned char* rcpBuffer, int* status,
                      char* text, QMutex* mutex)
{
    if (status != 0) *status = 0;
    readProperties(text);

    driver.hostShared = shared;
    driver.hostArg1 = quint32(arg);
    driver.rcpBuffer = rcpBuffer;
    driver.hostMutex = mutex;

    driver.readList.clear();
    driver.writeList.clear();
    driver.condReadList.clear();
    driver.dataAreas.clear();

    driver.frameKind = FRAME_IDLE;
    driver.priorityCount = 0;
    driver.handshakePending = 0;
    driver.failCount = 0;
    driver.maxBitBlockLen = wrapMul(driver.mergeLimit, BITS_PER_LIMIT_UNIT);
    driver.maxWordBlockLen = driver.mergeLimit;
    driver.commFailed = 0;
    driver.frameQueue.clear();
    driver.frameIndex = 0;
    driver.initFlag = 1;
    return 1;
}
