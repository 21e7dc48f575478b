#ifndef LOADED_DRIVER_H
#define LOADED_DRIVER_H

#include "driver/driverLibrary.h"

#include <gtest/gtest.h>

#include <QMutex>

#include <initializer_list>
#include <string>
#include <vector>

inline QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

inline QByteArray bytes(std::initializer_list<int> values)
{
    QByteArray out;
    for (int value : values)
        out.append(static_cast<char>(value));
    return out;
}

/// The library as a host loads it, initialised anew for each test.
class LoadedDriver : public testing::Test
{
protected:
    LoadedDriver() : driver(library()), shared(RECIPE_UPLOAD_FLAG + 1), recipe(64)
    {
        calls().clear();
        char properties[] = "7#0#0#3#32";
        int status = -1;
        driver.initProperty(shared.data(), 0, recipe.data(), &status, properties, &mutex);
        driver.setAddrValueChangeCallBack(note);
    }

    static const DriverLibrary& library()
    {
        static const DriverLibrary loaded(text(KAKB_DRIVER_FILE));
        return loaded;
    }

    /// "context station name addr" for each call of the callback.
    static std::vector<std::string>& calls()
    {
        static std::vector<std::string> noted;
        return noted;
    }

    static void note(int context, int station, QString& name, int addr)
    {
        calls().push_back(std::to_string(context) + " " + std::to_string(station) + " " +
                          name.toStdString() + " " + std::to_string(addr));
    }

    /// The next request as hexadecimal text, or "none".
    std::string nextRequest()
    {
        if (driver.getSendFrame(&frame) == 0) return "none";
        const char* at = reinterpret_cast<const char*>(frame.sendBuf);
        return QByteArray(at, frame.sendLen).toHex(' ').toUpper().toStdString();
    }

    int answer(QByteArray reply)
    {
        return driver.dealRcvFrame(reply, errorText);
    }

    KEY_ADDRESS key(const char* area, int addr, int count, int unitMode = 0)
    {
        KEY_ADDRESS made;
        made.station = 1;
        made.regName = text(area);
        made.addr = addr;
        made.count = count;
        made.unitMode = unitMode;
        return made;
    }

    std::vector<int> read(const char* area, int addr, int count, size_t length)
    {
        std::vector<unsigned char> out(length, 0xEE);
        driver.getData(1, text(area), addr, count, out.data());
        return std::vector<int>(out.begin(), out.end());
    }

    void write(const char* area, int addr, std::vector<unsigned char> values)
    {
        driver.setData(1, text(area), addr, 1, values.data(), 0);
    }

    const DriverLibrary& driver;
    std::vector<unsigned char> shared;
    std::vector<unsigned char> recipe;
    QMutex mutex;
    FRAME_PRO frame;
    QString errorText;
};

#endif
