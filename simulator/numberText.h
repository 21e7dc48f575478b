#ifndef NUMBER_TEXT_H
#define NUMBER_TEXT_H

#include <optional>
#include <string>
#include <vector>

/// Reads a whole decimal number.
/// @return false when the text is none, or is not from `first` to `last`
bool readNumber(const std::string& text, int first, int last, int& number);

/// Reads a number that may have decimals. Takes decimal numbers only: strtod alone would also take
/// "nan", "inf" and "0x1".
std::optional<double> decimalNumber(const std::string& text);

/// "what 'text' is not in first to last"
std::string outside(const std::string& what, const std::string& text, int first, int last);

/// The parts between the separators, at least one.
std::vector<std::string> fieldsOf(const std::string& text, char separator);

/// The words between blanks and tabs.
std::vector<std::string> wordsOf(const std::string& line);

#endif
