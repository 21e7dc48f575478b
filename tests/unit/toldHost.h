#ifndef TOLD_HOST_H
#define TOLD_HOST_H

#include "cacheHelpers.h"

#include <functional>
#include <utility>

/// A host of one link that writes to station 4 and can act inside the callback.
class ToldHostTest : public DriverTest
{
protected:
    enum { STATION = 4, CONFIRMED = 1, FAILED = 0 };

    ToldHostTest()
    {
        driver.callbackContext = CONTEXT;
    }

    ~ToldHostTest() override
    {
        whenTold() = nullptr;
    }

    /// Runs `action` at each call of the callback.
    static void tellTo(std::function<void()> action)
    {
        whenTold() = std::move(action);
        intf_setAddrValueChangeCallBack(runWhenTold);
    }

    /// The value that a host reads, of one word or one bit.
    static int shown(const char* regName, int address)
    {
        unsigned char value[2] = {9, 0};
        intf_getData(STATION, text(regName), address, 1, value);
        return value[0] + 256 * value[1];
    }

    static _DATA_ unit(const char* regName, int address)
    {
        return cachedUnit(STATION, regName, address);
    }

    static Bytes read(const char* regName, int address)
    {
        return readBytes(STATION, regName, address);
    }

    static Bytes written(const char* regName, int address)
    {
        return imageBytes(unit(regName, address).writeImage);
    }

    static int pending(const char* regName, int address)
    {
        return unit(regName, address).writePending;
    }

    static Notification told(const char* regName, int address)
    {
        return {CONTEXT, STATION, regName, address};
    }

private:
    static std::function<void()>& whenTold()
    {
        static std::function<void()> action;
        return action;
    }

    static void runWhenTold(int, int, QString&, int)
    {
        whenTold()();
    }
};

#endif
