#ifndef CHANGE_TEST_H
#define CHANGE_TEST_H

#include "cacheHelpers.h"
#include "changeNotification.h"

class ChangeTest : public DriverTest
{
protected:
    enum { STATION = 4 };

    ChangeTest()
    {
        driver.callbackContext = CONTEXT;
    }

    /// The only unit of the cache, of an area V.
    void putV(int address, unsigned monitorFlags, unsigned bitMonitorMask = 0)
    {
        driver.dataAreas.clear();
        putUnit(STATION, "V", address, 0, monitorFlags, bitMonitorMask);
    }

    Notifications byteChange(int oldValue, int newValue, int skipBits = 0)
    {
        const unsigned char before = static_cast<unsigned char>(oldValue);
        const unsigned char after = static_cast<unsigned char>(newValue);
        _byteDataChange(&before, &after, 0, skipBits);
        return takeNotifications();
    }
    Notifications wordChange(int oldValue, int newValue, int skipBits = 0)
    {
        _wordDataChange(&oldValue, &newValue, 0, skipBits);
        return takeNotifications();
    }
    Notifications dwordChange(int oldValue, int newValue, int skipBits = 0)
    {
        _dwordDataChange(&oldValue, &newValue, 0, skipBits);
        return takeNotifications();
    }
    Notifications bitChange()
    {
        _bitDataChange(0);
        return takeNotifications();
    }

    static Notification told(const char* name, int addr)
    {
        return {CONTEXT, STATION, name, addr};
    }
};

#endif
