#ifndef FUZZ_HOST_H
#define FUZZ_HOST_H

#include "driverState.h"

#include <QByteArray>
#include <QMutex>
#include <QString>

#include <string>
#include <vector>

/// A fresh driver for one input, and the host that it borrows its blocks from. Every block is
/// allocated to the byte, so that the address sanitizer sees a step outside.
class FuzzHost
{
public:
    enum { CONTEXT = 7, RECIPE_WORDS = 1024 };

    FuzzHost();
    ~FuzzHost();
    FuzzHost(const FuzzHost&) = delete;
    FuzzHost& operator=(const FuzzHost&) = delete;

    void initialise(const std::string& properties);
    void initialise(int localOnly, int retryLimit, int mergeLimit);

    /// intf_getSendFrame; a frame that is offered is checked.
    bool request(FRAME_PRO& frame);
    /// intf_dealRcvFrame; the result and the error text are checked against the frame in flight.
    int answer(QByteArray reply);
    /// intf_getData into a block of just the size that the header asks for.
    QByteArray read(int station, const QString& area, int address, int count);
    /// intf_setData from a block of just that size, filled from `values`.
    void write(int station, const QString& area, int address, int count, const QByteArray& values);

    void raise(RecipeFlag flag);
    void lower(RecipeFlag flag);
    bool isRaised(RecipeFlag flag);

    /// Of the host's block the driver may change the two flags only; no mutex stays taken.
    void requireUntouched();

    unsigned char* recipe()
    {
        return m_recipe.data();
    }

private:
    std::vector<unsigned char> m_shared;
    std::vector<unsigned char> m_recipe;
    QMutex m_mutex;
};

#endif
