#ifndef RESULT_FILE_H
#define RESULT_FILE_H

#include <QByteArray>
#include <QString>

/// Writes a verb's file in one go, see writeFile(). A stop of the user ends the wait for a reader.
/// @throws VerbFailure with the file's name and the reason: EXIT_INTERRUPTED after a stop,
/// otherwise
///         EXIT_USAGE
void writeResult(const QString& fileName, const QByteArray& bytes);

#endif
