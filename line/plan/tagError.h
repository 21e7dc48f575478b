#ifndef TAG_ERROR_H
#define TAG_ERROR_H

#include <stdexcept>

/// A tag file or an address cannot be used. what() has one line for each bad line of the file, with
/// the file's name, the line's number and the reason, or one line for the address.
struct TagFileError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

#endif
