#ifndef WRITE_VERB_H
#define WRITE_VERB_H

#include "program/hostProgram.h"
#include "verbs/tagChoice.h"

/// A value for a tag.
struct Assignment
{
    Tag tag;
    QByteArray bytes; ///< as intf_setData takes them
    QString text;     ///< as the user wrote it
};

/// From "NAME=VALUE" or "ADDRESS=VALUE". Throws VerbFailure when it is none, when the value does
/// not fit the tag, and when the area cannot be written.
Assignment assignment(const QString& text, const TagChoice& tags, const DriverLibrary& driver);

/// Writes the values in order and waits until the PLC has confirmed all of them. Throws VerbFailure
/// when one was not.
ExitStatus writeTags(const DriverLibrary& driver, const LinkOptions& options,
                     const std::vector<Assignment>& assignments);

#endif
