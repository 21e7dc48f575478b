#ifndef DECODED_REPLY_H
#define DECODED_REPLY_H

#include "cacheHelpers.h"
#include "replyDecoding.h"

/// Replies of station 1, decoded into the cache, and a host that reads inside the callback.
class DecodedReplyTest : public DriverTest
{
protected:
    DecodedReplyTest()
    {
        driver.callbackContext = CONTEXT;
        seenByHost().clear();
    }

    static void decode(const QByteArray& reply, int count, const char* regName, int addr)
    {
        analyzeFrameOfVal(reply, count, 3, variable(1, regName, addr, count));
    }

    /// The values that the host read when it was told of them.
    static Bytes& seenByHost()
    {
        static Bytes bytes;
        return bytes;
    }

    static void readBack(int, int station, QString& name, int addr)
    {
        const bool word = name.endsWith(text("W"));
        unsigned char value[2];
        intf_getData(station, name, addr, 1, value);
        seenByHost().insert(seenByHost().end(), value, value + (word ? 2 : 1));
    }

    /// Makes the cache grow.
    static void readManyUnits(int, int, QString&, int addr)
    {
        unsigned char value[2];
        for (int i = 0; i < 64; ++i)
            intf_getData(2, text("MW"), 64 * addr + i, 1, value);
    }

    static Notification told(const char* name, int addr)
    {
        return {CONTEXT, 1, name, addr};
    }
};

#endif
