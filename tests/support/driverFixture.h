#ifndef DRIVER_FIXTURE_H
#define DRIVER_FIXTURE_H

#include "driverState.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QMutex>
#include <QString>

#include <initializer_list>
#include <ostream>
#include <string>
#include <vector>

/// One call of the value-change callback.
struct Notification
{
    int context;
    int station;
    std::string name;
    int addr;

    bool operator==(const Notification& other) const
    {
        return context == other.context && station == other.station && name == other.name &&
               addr == other.addr;
    }
};

std::ostream& operator<<(std::ostream& out, const Notification& notification);

typedef std::vector<Notification> Notifications;

/// A fresh driver for each test, with a host's blocks around it and a callback that notes its
/// calls.
class DriverTest : public testing::Test
{
protected:
    enum { CONTEXT = 7, SHARED_BYTES = RECIPE_UPLOAD_FLAG + 1, RECIPE_BYTES = 4096 };

    DriverTest();
    ~DriverTest() override;

    /// Initialises with context CONTEXT and retry and merge limits of the test's choice.
    void initialise(int retryLimit = 3, int mergeLimit = 32, int localOnly = 0);

    /// What the callback was told since the last call of this function.
    Notifications takeNotifications();

    std::vector<unsigned char> shared;
    std::vector<unsigned char> recipe;
    QMutex hostMutex;
    QString errorText;
};

/// Shorter than QString(QLatin1String(...)) in rows of test data.
QString text(const char* latin1);

QByteArray bytes(std::initializer_list<int> values);

KEY_ADDRESS key(int station, const char* regName, int addr, int count, int unitMode = 0);

VARIABLE variable(int station, const char* regName, int addr, int count,
                  std::initializer_list<int> values = {});

_RCP_VAR_PRO recipeVariable(int linkNo, int station, const char* regName, int addr, int count,
                            int bufOffset);

/// The bytes to send, as text "01 03 00 64 …" for readable failures.
std::string hex(const FRAME_PRO& frame);
std::string hex(const QByteArray& frame);

/// `body` closed by its checksum, which the driver has not worked out.
QByteArray withChecksum(std::initializer_list<int> body);

/// The cached unit with this key; fails the test when there is none.
_DATA_ cachedUnit(int station, const char* regName, int address);

/// Makes or finds the unit and gives it a read value and marks.
int putUnit(int station, const char* regName, int address, unsigned readValue,
            unsigned monitorFlags = 0, unsigned bitMonitorMask = 0);

#endif
