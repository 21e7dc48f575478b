#ifndef ASSIGNMENT_H
#define ASSIGNMENT_H

#include "plan/tagValue.h"
#include "verbs/tagChoice.h"

/// A tag and its new value.
struct Assignment
{
    Tag tag;
    QByteArray bytes; ///< the value in the format of intf_setData
    size_t list = 0;  ///< index of the argument; one frame writes all words of an argument
};

/// The assignment of a value in the user's words to a tag.
/// @param argument  begins the message
/// @throws VerbFailure when the value does not fit the tag, or when the tag cannot be written
Assignment assignmentOf(const QString& argument, const Tag& tag, const QString& value,
                        const DriverLibrary& driver, NonFinite nonFinite);

/// Reads arguments such as "NAME=VALUE", "MW100:float32=21.5" and "MW10=1,2,3". Behind an address
/// the values for several words or bits, each right behind the one before, have commas between
/// them. A range needs one value for each of its places.
/// @throws VerbFailure when an argument is malformed, when a value does not fit its tag, when a tag
///         cannot be written, or when the words of an argument do not fit into one frame
/// @throws TagFileError when there is no such name or address
std::vector<Assignment> assignmentsOf(const QStringList& arguments, const TagChoice& tags,
                                      const DriverLibrary& driver, NonFinite nonFinite);

#endif
