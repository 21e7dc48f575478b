#ifndef WRITE_VERB_H
#define WRITE_VERB_H

#include "program/hostProgram.h"
#include "verbs/tagChoice.h"

/// A tag and its new value.
struct Assignment
{
    Tag tag;
    QByteArray bytes; ///< the value in the format of intf_setData
    QString text;     ///< the value in the user's words
};

/// Reads "NAME=VALUE" or "ADDRESS=VALUE".
/// @throws VerbFailure when the text is malformed, when the value does not fit the tag, or when the
///         tag cannot be written
Assignment assignment(const QString& text, const TagChoice& tags, const DriverLibrary& driver);

/// Writes the values in order and waits for the PLC's confirmation of all values. Prints the end of
/// each value in the same order.
/// @return the status of the first value that was not confirmed
ExitStatus writeTags(const DriverLibrary& driver, const LinkOptions& options,
                     const std::vector<Assignment>& assignments);

#endif
