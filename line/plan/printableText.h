#ifndef PRINTABLE_TEXT_H
#define PRINTABLE_TEXT_H

#include <QString>

/// The text with "?" in place of characters that would move a terminal's cursor or break the line:
/// control and format characters, line and paragraph separators.
QString printableText(const QString& text);

#endif
