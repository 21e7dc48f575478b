#ifndef WATCH_SCREEN_H
#define WATCH_SCREEN_H

#include "output/watchRow.h"
#include "session/linkFigures.h"

#include <QByteArray>

#include <vector>

/// The table of a watch on a terminal (ECMA-48 control sequences, UTF-8), refreshed in place. Write
/// each result to the terminal at once. A frame overwrites the screen and does not clear it first,
/// so the table does not flicker.
class WatchScreen
{
public:
    /// A frame: the link's figures of the last ten seconds, the headings and the rows. When the
    /// terminal has too few lines, the last line has the number of missing rows. The last column
    /// stays empty.
    /// @param columns  width of the terminal
    /// @param rows     height of the terminal
    QByteArray frame(const std::vector<WatchRow>& table, const LinkFigures& figures, int columns,
                     int rows) const;

    /// Write it before the first frame: changes to the alternate screen and hides the cursor.
    static QByteArray enter();

    /// Write it after the last frame, also after an incomplete frame: restores the former screen.
    static QByteArray leave();
};

#endif
