#ifndef MODEL_CACHE_H
#define MODEL_CACHE_H

#include "modelTypes.h"

#include <functional>
#include <map>
#include <tuple>

namespace model {

/// Units of PLC memory as the host sees them: the value last read, over it the value last written
/// while that is unconfirmed.
class Cache
{
public:
    /// Told of a variable that changes, mostly before the new value is in place.
    using Changed = std::function<void(int station, const std::string& area, int addr)>;

    void clear();
    void clearMarks();
    void mark(const Key& key);

    /// Two bytes a word, one a bit; nothing for an unknown area.
    Bytes read(int station, const std::string& area, int addr, int count);

    void write(int station, const std::string& area, int addr, int count, const Bytes& values,
               const Changed& changed);
    void confirm(const Variable& written);
    void withdraw(const Variable& written, const Changed& changed);

    void takeReply(const Frame& frame, const Bytes& reply, const Changed& changed);

private:
    struct Unit
    {
        bool monitored = false;
        bool pending = false;
        int readValue = 0;
        int writtenValue = 0;

        int shown() const
        {
            return pending ? writtenValue : readValue;
        }
    };

    Unit& unit(int station, const std::string& area, int addr);
    void takeWords(const Frame& frame, const Bytes& reply, const Changed& changed);
    void takeBits(const Frame& frame, const Bytes& reply, const Changed& changed);
    void takeValue(const Variable& var, int addr, int value, const Changed& changed);

    std::map<std::tuple<int, std::string, int>, Unit> m_units;
};

} // namespace model

#endif
