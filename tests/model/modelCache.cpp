#include "modelCache.h"

#include "branches.h"
#include "modelAddresses.h"

namespace model {

namespace {

enum { BITS_IN_GROUP = 16, BITS_FROM_DATA = 23, BITS_FROM_REPLY = 47 };

int byteAt(const Bytes& reply, int position)
{
    const bool inside = position >= 0 && position < static_cast<int>(reply.size());
    return inside ? reply[static_cast<size_t>(position)] : 0;
}

void countBitPlace(int i)
{
    if (i < BITS_IN_GROUP)
        reach(Branch::DECODE_BIT_OF_GROUP);
    else if (i < BITS_FROM_DATA)
        reach(Branch::DECODE_BIT_PAST_GROUP);
    else if (i < BITS_FROM_REPLY)
        reach(Branch::DECODE_BIT_BEFORE_DATA);
    else
        reach(Branch::DECODE_BIT_BEFORE_REPLY);
}

} // namespace

void Cache::clear()
{
    m_units.clear();
}

void Cache::clearMarks()
{
    for (auto& entry : m_units)
        entry.second.monitored = false;
}

Cache::Unit& Cache::unit(int station, const std::string& area, int addr)
{
    return m_units[std::make_tuple(station, area, addr)];
}

void Cache::mark(const Key& key)
{
    if (findArea(key.area) == nullptr) return;
    for (int i = 0; i < key.count; ++i)
        unit(key.station, key.area, key.addr + i).monitored = true;
}

Bytes Cache::read(int station, const std::string& areaName, int addr, int count)
{
    Bytes out;
    const Area* area = findArea(areaName);
    if (area == nullptr) return out;
    for (int i = 0; i < count; ++i) {
        const Unit& found = unit(station, areaName, addr + i);
        if (found.pending) reach(Branch::VALUE_PENDING_SHOWN);
        out.push_back(static_cast<unsigned char>(found.shown() % 256));
        if (area->words) out.push_back(static_cast<unsigned char>(found.shown() / 256));
    }
    return out;
}

void Cache::write(int station, const std::string& areaName, int addr, int count,
                  const Bytes& values, const Changed& changed)
{
    const Area* area = findArea(areaName);
    if (area == nullptr) return;
    for (int i = 0; i < count; ++i) {
        const auto place = static_cast<size_t>(i);
        const int value =
            area->words ? values[2 * place] + values[2 * place + 1] * 256 : values[place];
        Unit& written = unit(station, areaName, addr + i);
        const bool differs = written.shown() != value;
        const bool told = differs && (!area->words || written.monitored);
        reach(differs ? Branch::WRITE_CHANGES : Branch::WRITE_CHANGES_NOTHING);
        if (told) changed(station, areaName, addr + i);
        written.writtenValue = value;
        written.pending = true;
    }
}

void Cache::confirm(const Variable& written)
{
    for (int i = 0; i < written.count; ++i) {
        Unit& confirmed = unit(written.station, written.area, written.addr + i);
        if (!confirmed.pending) reach(Branch::CONFIRM_NO_LONGER_PENDING);
        confirmed.pending = false;
        confirmed.readValue = confirmed.writtenValue;
    }
}

void Cache::withdraw(const Variable& written, const Changed& changed)
{
    const Area* area = findArea(written.area);
    for (int i = 0; i < written.count; ++i) {
        Unit& withdrawn = unit(written.station, written.area, written.addr + i);
        withdrawn.pending = false;
        const bool told = !area->words || withdrawn.monitored;
        reach(told ? Branch::WITHDRAW_TOLD : Branch::WITHDRAW_SILENT);
        if (told) changed(written.station, written.area, written.addr + i);
    }
}

void Cache::takeReply(const Frame& frame, const Bytes& reply, const Changed& changed)
{
    const Area* area = findArea(frame.var.area);
    if (area == nullptr) return;
    if (area->words)
        takeWords(frame, reply, changed);
    else
        takeBits(frame, reply, changed);
}

void Cache::takeWords(const Frame& frame, const Bytes& reply, const Changed& changed)
{
    for (int i = 0; i < frame.itemCount; ++i) {
        const int high = frame.dataStart + 2 * i;
        const int value = byteAt(reply, high) * 256 + byteAt(reply, high + 1);
        takeValue(frame.var, frame.var.addr + i, value, changed);
    }
}

void Cache::takeBits(const Frame& frame, const Bytes& reply, const Changed& changed)
{
    const int shift = frame.var.area == "MX" ? 3000 : 0;
    const int base = (frame.var.addr - shift) / BITS_IN_GROUP * BITS_IN_GROUP + shift;
    for (int i = 0; i < frame.itemCount; ++i) {
        countBitPlace(i);
        const int byte = byteAt(reply, frame.dataStart + (15 - i) / 8);
        takeValue(frame.var, base + i, (byte >> (i % 8)) % 2, changed);
    }
}

void Cache::takeValue(const Variable& var, int addr, int value, const Changed& changed)
{
    Unit& taken = unit(var.station, var.area, addr);
    if (taken.readValue == value) {
        reach(taken.pending ? Branch::DECODE_UNCHANGED_UNDER_WRITE : Branch::DECODE_UNCHANGED);
        return;
    }
    if (taken.pending) reach(Branch::DECODE_ENDS_PENDING_WRITE);
    taken.pending = false;
    reach(taken.monitored ? Branch::DECODE_CHANGED_TOLD : Branch::DECODE_CHANGED_SILENT);
    if (taken.monitored) changed(var.station, var.area, addr);
    taken.readValue = value;
}

} // namespace model
