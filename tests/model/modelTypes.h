#ifndef MODEL_TYPES_H
#define MODEL_TYPES_H

#include <string>
#include <vector>

// What the model and the adapter to the real driver exchange. Standard containers only: the model
// shares no line with the driver, so that a mistake is not made in both.

namespace model {

using Bytes = std::vector<unsigned char>;

struct Variable
{
    int varId = 0;
    int station = 0;
    std::string area;
    int addr = 0;
    int count = 0;
    Bytes value; ///< only the bytes that mean something
};

struct Frame
{
    Bytes bytes;
    int recvLen = 0;
    int dataStart = 0;
    int itemCount = 0;
    bool unsendable = false; ///< stands for a recipe block that cannot be transferred
    Variable var;
};

struct Key
{
    int station = 0;
    std::string area;
    int addr = 0;
    int unitMode = 0;
    int count = 0;
    int offset = 0; ///< recipe keys: place in the recipe buffer
};

struct RecipeRecord
{
    int linkNo = 0;
    int station = 0;
    std::string area;
    int addr = 0;
    int count = 0;
    int offset = 0;
};

struct Notification
{
    int context = 0;
    int station = 0;
    std::string name;
    int addr = 0;
    Bytes seen; ///< what values read inside the callback gave: of the unit, and of its neighbour
};

/// Inside the callback the host reads a unit that the cache may not know yet, so that it grows
/// while the driver goes through it.
inline int neighbourOf(int addr)
{
    return static_cast<int>(static_cast<unsigned>(addr) + 5u);
}

/// The host's memory that a driver works on.
struct HostMemory
{
    unsigned char downloadFlag = 0;
    unsigned char uploadFlag = 0;
    Bytes recipe;
};

} // namespace model

#endif
