#ifndef HEX_TEXT_H
#define HEX_TEXT_H

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

/// Bytes as "01 0A FF", for failures that can be read.
template <typename Bytes> std::string hexOf(const Bytes& bytes)
{
    std::string hex;
    for (const auto byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X", unsigned(static_cast<unsigned char>(byte)));
        hex += (hex.empty() ? "" : " ") + std::string(digits);
    }
    return hex;
}

/// Bytes from "01 0A FF".
inline std::vector<unsigned char> bytesOf(const std::string& hex)
{
    std::istringstream in(hex);
    std::vector<unsigned char> bytes;
    for (unsigned value = 0; in >> std::hex >> value;)
        bytes.push_back(static_cast<unsigned char>(value));
    return bytes;
}

#endif
