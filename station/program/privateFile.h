#ifndef PRIVATE_FILE_H
#define PRIVATE_FILE_H

#include <QByteArray>
#include <QString>

/// What a small file with a secret has, or why it cannot be used.
struct PrivateText
{
    bool isMissing = false;
    QByteArray bytes; ///< as they stand there
    QString problem;  ///< in words with the file's name; empty: none
};

/// Reads a file of at most 4096 bytes. It may belong only to the user of this process or to root,
/// and nobody else may read or change it.
/// @param what  for the problem: "token file"
PrivateText privateText(const QString& fileName, const QString& what);

#endif
