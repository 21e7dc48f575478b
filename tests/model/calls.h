#ifndef CALLS_H
#define CALLS_H

#include "modelTypes.h"

#include <string>
#include <variant>
#include <vector>

// The calls of a host, as values that can be made up, dropped, repeated and printed.

namespace model {

enum class Identity { PROTOCOL_TYPE, VERSION, PARAMETER, PROPERTY_PAGE };

struct IdentityCall
{
    Identity which;
    bool nullPointer;
};

struct SetPageCall
{
    std::string page;
    bool nullPointer;
};

struct CallbackCall
{
    bool set;
};

/// A false member hands in a null pointer.
struct InitCall
{
    bool shared;
    bool buffer;
    bool mutex;
    bool status;
    bool hasText;
    std::string text;
    int arg;
};

struct CheckCall
{
    std::string area;
    std::string text;
    int addr;
    int dataType;
    int count;
    int accessMode;
};

struct ValidityCall
{
    std::string area;
    std::string text;
    int addr;
    int count;
    int isWord;
};

struct DescribeCall
{
    std::string area;
};

struct AreaListCall
{
    int kind;
};

struct SeriesCall
{
    std::string area;
    int start;
    int count;
    int interval;
};

struct MergeCall
{
    std::vector<Key> keys;
};

struct OneShotCall
{
    Key key;
    int varId;
};

struct RecipeCall
{
    std::vector<RecipeRecord> records;
};

struct NextFrameCall
{
    bool nullPointer;
};

/// How a reply relates to the request in flight, so that it keeps its meaning when earlier calls
/// are dropped.
enum class ReplyKind {
    GOOD,
    EMPTY,
    LATE,
    TRUNCATED,
    EXTENDED,
    CORRUPTED,
    WRONG_CRC_LOW,
    WRONG_CRC_HIGH,
    OTHER_STATION,
    OTHER_FUNCTION,
    EXCEPTION,
    NOISE,
    COUNT
};

struct ReplyCall
{
    ReplyKind kind;
    unsigned seed;
};

struct GetDataCall
{
    int station;
    std::string area;
    int addr;
    int count;
    bool nullPointer;
};

struct SetDataCall
{
    int station;
    std::string area;
    int addr;
    int count;
    Bytes values;
    int varId;
};

/// The host's own doing: a flag in its shared block, and what is in its recipe buffer.
struct FlagCall
{
    bool upload;
    unsigned char value;
};

struct FillBufferCall
{
    unsigned seed;
};

using Call =
    std::variant<IdentityCall, SetPageCall, CallbackCall, InitCall, CheckCall, ValidityCall,
                 DescribeCall, AreaListCall, SeriesCall, MergeCall, OneShotCall, RecipeCall,
                 NextFrameCall, ReplyCall, GetDataCall, SetDataCall, FlagCall, FillBufferCall>;

/// The call as a host would write it, on one line.
std::string callText(const Call& call);

enum { RECIPE_WORDS = 4096 };

/// What FillBufferCall puts into the recipe buffer.
Bytes recipeBytes(unsigned seed);

std::string hexText(const Bytes& bytes);

} // namespace model

#endif
