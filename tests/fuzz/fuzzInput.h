#ifndef FUZZ_INPUT_H
#define FUZZ_INPUT_H

#include "calls.h"

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
    bool oneIn(int n)
    {
        return number(1, n) == n;
    }

    /// Mostly one of the six; else a name near them or any text.
    std::string areaName();
    /// UTF-8: letters and signs of ASCII, its blanks, and characters far from it.
    std::string anyText(size_t most);
    /// Latin-1 without a 0 byte, as the property text is, and without its blanks past ASCII.
    std::string cText(size_t most);
    int addressNumber();
    int station();
    /// Mostly 1 to `most`, now and then 0 or less.
    int count(int most);
    /// `length` bytes, 0 where the input has ended.
    model::Bytes bytes(int length);

private:
    FuzzedDataProvider m_data;
};

/// Whether the units of this area are words. Strange areas have none.
bool isWordName(const std::string& area);

#endif
