#ifndef WATCH_SCREEN_H
#define WATCH_SCREEN_H

#include "output/watchRow.h"
#include "session/linkFigures.h"

#include <QByteArray>

#include <vector>

/// A watch as a table on a terminal (ECMA-48 control sequences, UTF-8), refreshed in place. Write
/// each result at once: what is on the screen is overwritten, never cleared beforehand.
class WatchScreen
{
public:
    /// The link's figures of late, the headings and as many rows as the terminal has lines for; the
    /// rest is counted in the last line. The last column stays empty.
    /// @param columns  the terminal's width
    /// @param rows     its height
    QByteArray frame(const std::vector<WatchRow>& table, const LinkFigures& figures, int columns,
                     int rows) const;

    /// Before the first frame: another screen without a cursor.
    static QByteArray enter();

    /// After the last frame, even one cut short: the screen as it was before.
    static QByteArray leave();
};

#endif
