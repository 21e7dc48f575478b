#ifndef WRITTEN_FILE_H
#define WRITTEN_FILE_H

#include <QByteArray>
#include <QString>

#include <cstdio>
#include <memory>
#include <stdexcept>

// Every file that a verb writes. The name decides how:
//
//   "-" or "/dev/stdout"                 through standard output
//   a file that this program has open    through the open descriptor, at its present place: what a
//                                        shell has written into the file, or writes later, stays
//   a regular file, or no file           see the two functions
//   any other file: a pipe, a device     in place; a named pipe waits for its reader
//
// Symbolic links are followed. A reader that has closed standard output is no failure; a reader
// that has closed a named pipe is.

/// A file cannot be written. what() is the reason alone, such as "No space left on device".
struct WriteError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Whether a file of this name goes to standard output. The values of the verb then belong on
/// standard error.
bool isStandardOutput(const QString& fileName);

/// Writes a file in one go. A regular file is replaced as a whole or not at all. The new file has
/// the mode of the old file, and its owner and group as far as the system permits.
/// @param isToEnd  whether the program is to end: a waiting reader is then given up
/// @throws WriteError
void writeFile(const QString& fileName, const QByteArray& bytes, bool (*isToEnd)());

/// The destructor's closing is silent: flush the stream first to notice a failure.
struct CloseStream
{
    void operator()(std::FILE* stream) const
    {
        std::fclose(stream);
    }
};

/// Opens a file that is written bit by bit. A regular file is emptied first.
/// @param isToEnd  as in writeFile(); called while the stream is open
/// @return never null
/// @throws WriteError
std::unique_ptr<std::FILE, CloseStream> openFile(const QString& fileName, bool (*isToEnd)());

#endif
