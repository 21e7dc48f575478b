#ifndef COLUMN_TEXT_H
#define COLUMN_TEXT_H

#include <QString>

// Prepares the user's and the PLC's texts for a terminal. Each code point counts as one column.

enum Alignment { LEFT_ALIGNED, RIGHT_ALIGNED };

int columnsOf(const QString& text);

/// The text in at most `width` columns. The last column of a shortened text is "…".
QString cutText(const QString& text, int width);

/// The text in exactly `width` columns, shortened or filled with blanks.
QString columnText(const QString& text, int width, Alignment alignment);

#endif
