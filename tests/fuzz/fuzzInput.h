#ifndef FUZZ_INPUT_H
#define FUZZ_INPUT_H

#include <QByteArray>
#include <QString>

#include <fuzzer/FuzzedDataProvider.h>

#include <string>

/// The fuzzer's bytes as what a host hands to the driver. Likely values are frequent, so that calls
/// meet each other, and any value is possible where the driver must take any.
class FuzzInput
{
public:
    FuzzInput(const uint8_t* data, size_t size) : m_data(data, size) {}

    bool isLeft()
    {
        return m_data.remaining_bytes() > 0;
    }
    int number(int low, int high)
    {
        return m_data.ConsumeIntegralInRange<int>(low, high);
    }
    int anyNumber()
    {
        return m_data.ConsumeIntegral<int>();
    }
    bool yes()
    {
        return m_data.ConsumeBool();
    }

    QString knownArea();
    QString wordArea();
    /// Mostly one of the six; else a name near them or any text.
    QString areaName();
    QString anyText(size_t most);
    /// Latin-1 without a 0 byte, as the property text is.
    std::string cText(size_t most);
    int addressNumber();
    int station();
    /// 1 or 2, which answer and share requests.
    int usualStation()
    {
        return number(1, 2);
    }
    /// Mostly 1 to `most`, now and then 0 or less.
    int count(int most);
    /// `length` bytes, 0 where the input has ended.
    QByteArray bytes(int length);

private:
    FuzzedDataProvider m_data;
};

#endif
