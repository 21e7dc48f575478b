#ifndef STALE_NAME_H
#define STALE_NAME_H

#include <functional>
#include <string>

/// Removes a name that a killed program left behind: the link to its terminal, or its socket.
///
///   look: stale -> move aside -> look again: stale -> remove
///                                            live  -> move back
///
/// Between the first look and the move another program may have put a live name there. So only
/// the name that was moved aside is removed, never the name at `path`.
/// @param isStale  looks at a path
/// @return false when the name is live, or could not be moved (errno says why)
bool removeStaleName(const std::string& path,
                     const std::function<bool(const std::string& path)>& isStale);

#endif
