#ifndef ON_USED_MEMORY_H
#define ON_USED_MEMORY_H

#include <algorithm>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <new>

/// An object built where every byte was set before, so that a forgotten field shows.
template <typename T> class OnUsedMemory
{
public:
    OnUsedMemory()
    {
        std::memset(place, 0xA5, sizeof place);
        object = new (place) T();
    }
    ~OnUsedMemory()
    {
        destroy();
    }

    OnUsedMemory(const OnUsedMemory&) = delete;
    OnUsedMemory& operator=(const OnUsedMemory&) = delete;

    void destroy()
    {
        if (object != nullptr) object->~T();
        object = nullptr;
    }

    T* operator->()
    {
        return object;
    }

private:
    alignas(T) unsigned char place[sizeof(T)];
    T* object;
};

/// Whether these fields of one object lie in the order of their naming.
inline bool inThisOrder(std::initializer_list<const void*> fields)
{
    return std::is_sorted(fields.begin(), fields.end(), std::less<const void*>());
}

#endif
