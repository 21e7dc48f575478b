#ifndef WATCH_SCREEN_H
#define WATCH_SCREEN_H

#include "output/tableView.h"
#include "session/linkFigures.h"

#include <QByteArray>
#include <QStringList>

/// The table of a watch on a terminal (ECMA-48 control sequences, UTF-8), refreshed in place. Write
/// each result to the terminal at once. A frame overwrites the screen and does not clear it first,
/// so the table does not flicker. All functions are pure.
class WatchScreen
{
public:
    /// A frame: the link's figures of the last ten seconds, the headings, the rows from the view's
    /// top on, and the view's bottom line. A view without keys has no bottom line; when the
    /// terminal has too few lines, its last line has the number of missing rows. The last column
    /// stays empty.
    /// @param columns  width of the terminal
    /// @param rows     height of the terminal
    static QByteArray frame(const TableView& view, const LinkFigures& figures, int columns,
                            int rows);

    /// The number of rows of the table that such a frame has room for.
    static int page(const TableView& view, const LinkFigures& figures, int columns, int rows);

    /// The headings and rows of the last frame as plain lines, for the screen that stays after the
    /// watch. When rows are missing, the last line has their number.
    /// @param lines  most rows of the table
    static QStringList lastTable(const TableView& view, int columns, int lines);

    /// Write it before the first frame: changes to the alternate screen and hides the cursor.
    static QByteArray enter();

    /// Write it after the last frame, also after an incomplete frame: restores the former screen.
    static QByteArray leave();
};

#endif
