#include "numberText.h"

#include <charconv>
#include <cstdlib>
#include <sstream>

bool readNumber(const std::string& text, int first, int last, int& number)
{
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && read.ptr == end && number >= first && number <= last;
}

std::optional<double> decimalNumber(const std::string& text)
{
    if (text.find_first_not_of("0123456789.+-eE") != std::string::npos) return std::nullopt;
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0') return std::nullopt;
    return number;
}

std::string outside(const std::string& what, const std::string& text, int first, int last)
{
    return what + " '" + text + "' is not in " + std::to_string(first) + " to " +
           std::to_string(last);
}

std::vector<std::string> fieldsOf(const std::string& text, char separator)
{
    std::vector<std::string> fields(1);
    for (const char letter : text) {
        if (letter == separator) {
            fields.emplace_back();
        } else {
            fields.back() += letter;
        }
    }
    return fields;
}

std::vector<std::string> wordsOf(const std::string& line)
{
    std::istringstream in(line);
    std::vector<std::string> words;
    for (std::string word; in >> word;)
        words.push_back(word);
    return words;
}
