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

/// An assignment of a value to a known tag.
/// @param text   what the user typed, for the message
/// @param value  the value in the user's words
/// @throws VerbFailure when the value does not fit the tag, or when the tag cannot be written
Assignment assignment(const QString& text, const Tag& tag, const QString& value,
                      const DriverLibrary& driver);

/// Hands in all writes. Values that one frame holds are one job.
/// @return the job of each assignment
std::vector<int> startWrites(HostProgram& host, const std::vector<Assignment>& assignments);

/// The outcome of a write in words: after JobEnd::DONE, and after the other outcomes. Without a
/// confirmation it does not say "not written", because the PLC may have executed the write.
QString confirmedText(const Assignment& assigned);
QString failureText(const Assignment& assigned, const JobEnd& end);

/// Writes the values in order and waits for the PLC's confirmation of all values.
/// @throws VerbFailure when a value was not confirmed
ExitStatus writeTags(const DriverLibrary& driver, const LinkOptions& options,
                     const std::vector<Assignment>& assignments);

#endif
