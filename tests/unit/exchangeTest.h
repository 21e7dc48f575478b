#ifndef EXCHANGE_TEST_H
#define EXCHANGE_TEST_H

#include "driverFixture.h"

/// The exchange as a host runs it, one request and one reply at a time.
class ExchangeTest : public DriverTest
{
protected:
    ExchangeTest()
    {
        initialise();
    }

    /// The bytes to send, "" for a frame without any; "none" when there is nothing to offer.
    std::string request()
    {
        return intf_getSendFrame(&frame) == 1 ? hex(frame) : "none";
    }

    int answer(QByteArray reply)
    {
        return intf_dealRcvFrame(reply, errorText);
    }

    /// The reply in hexadecimal digits.
    int answer(const char* digits)
    {
        return answer(QByteArray::fromHex(digits));
    }

    int silence()
    {
        return answer(QByteArray());
    }

    /// What a PLC answers to the write requested last.
    int echo()
    {
        const unsigned char* sent = frame.sendBuf;
        return answer(withChecksum({sent[0], sent[1], sent[2], sent[3], sent[4], sent[5]}));
    }

    /// What a PLC answers to the read of one register requested last.
    int answerWord(int value)
    {
        return answer(
            withChecksum({frame.sendBuf[0], frame.sendBuf[1], 2, value >> 8, value & 0xFF}));
    }

    /// Silence until the request is dropped.
    void giveUp()
    {
        while (silence() == REPLY_RETRY)
            ;
    }

    void raise(RecipeFlag flag)
    {
        shared[flag] = 1;
    }

    static void queueWrites(int writes)
    {
        for (int i = 0; i < writes; ++i)
            driver.writeList.append(variable(1, "QW", i, 1, {i, 0}));
    }

    static void queueOneShotReads(int reads)
    {
        for (int i = 0; i < reads; ++i)
            driver.condReadList.append(variable(1, "IW", i, 1));
    }

    static void poll(int blocks)
    {
        for (int i = 0; i < blocks; ++i)
            driver.readList.append(variable(1, "MW", 3000 + i, 1));
    }

    static std::string addresses(const QList<VARIABLE>& list)
    {
        std::string out;
        for (int i = 0; i < int(list.size()); ++i)
            out += (i != 0 ? " " : "") + std::to_string(list.at(i).addr);
        return out;
    }

    FRAME_PRO frame;
};

#endif
