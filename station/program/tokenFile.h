#ifndef TOKEN_FILE_H
#define TOKEN_FILE_H

#include <QByteArray>
#include <QString>

// The file of the token that every request needs. The file holds one line: characters that
// `Authorization: Bearer` takes, letters, digits and -._~+/=

/// Why the file cannot be used, in words with its name; empty: it can, or it is missing. It may
/// belong only to the user of this process or to root, and nobody else may read it.
QString tokenFileProblem(const QString& fileName);

/// The token of the file. A missing file is made with a random token: the file appears whole or not
/// at all.
/// @throws StationFailure STATION_USAGE
QByteArray tokenOf(const QString& fileName);

#endif
