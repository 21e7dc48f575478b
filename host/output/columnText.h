#ifndef COLUMN_TEXT_H
#define COLUMN_TEXT_H

#include <QString>

// Texts of others on a terminal. Each code point counts as one column.

enum Alignment { LEFT_ALIGNED, RIGHT_ALIGNED };

/// With "?" for what would move the cursor or break the line: control and format characters, line
/// and paragraph separators.
QString printableText(const QString& text);

int columnsOf(const QString& text);

/// At most `width` columns, the last one "…" when something is missing.
QString cutText(const QString& text, int width);

/// Exactly `width` columns.
QString columnText(const QString& text, int width, Alignment alignment);

#endif
