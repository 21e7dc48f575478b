#ifndef STATE_FOLDER_H
#define STATE_FOLDER_H

#include "links/descriptor.h"

#include <QString>

/// The folder of the station's state: the given one, else $STATE_DIRECTORY, which the service
/// manager sets, else $XDG_STATE_HOME/kakb-station, else ~/.local/state/kakb-station.
/// @param given  empty: none
/// @throws StationFailure STATION_STATE when nothing names a folder
QString stateFolderOf(const QString& given);

/// The folder of the station's state, held by this process alone until the destruction or the
/// process's end.
class StateFolder
{
public:
    /// Makes the folder when it is missing; only its owner can enter it.
    /// @throws StationFailure STATION_STATE, also when another process holds the folder
    explicit StateFolder(const QString& path);

    /// The path of a file in the folder.
    QString file(const char* name) const;

private:
    const QString m_path;
    Descriptor m_lock;
};

#endif
