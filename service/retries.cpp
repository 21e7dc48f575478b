#include "retries.h"

#include "driverState.h"
#include "replyHandling.h"

int rejectReply(int length, QString& errorText)
{
    ++driver.failCount;
    if (driver.failCount < driver.retryLimit) return REPLY_RETRY;

    const VARIABLE& var = driver.frameQueue.at(0).var;
    driver.commFailed = 1;
    completeWrite(var, 0);
    errorText = QString(QLatin1String("%1,%2,%3,%4"))
                    .arg(length)
                    .arg(var.station)
                    .arg(var.addr)
                    .arg(var.regName);
    driver.frameQueue.clear();
    driver.failCount = 0;
    dealListWhenFinish();
    return REPLY_GIVEN_UP;
}
