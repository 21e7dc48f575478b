#ifndef HEX_TEXT_H
#define HEX_TEXT_H

#include "frame.h"

#include <cstdio>
#include <sstream>
#include <string>

/// Bytes from "01 0A FF".
inline Bytes bytesOf(const std::string& hex)
{
    std::istringstream in(hex);
    Bytes bytes;
    for (unsigned value = 0; in >> std::hex >> value;)
        bytes.push_back(static_cast<std::uint8_t>(value));
    return bytes;
}

inline std::string hexOf(const Bytes& bytes)
{
    std::string hex;
    for (const std::uint8_t byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X", byte);
        hex += (hex.empty() ? "" : " ") + std::string(digits);
    }
    return hex;
}

#endif
