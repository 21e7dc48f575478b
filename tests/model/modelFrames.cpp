#include "modelFrames.h"

#include "branches.h"
#include "modelAddresses.h"

#include "modbusChecksum.h"

#include <algorithm>

namespace model {

namespace {

enum { CRC_BYTES = 2 };

enum Function {
    READ_HOLDING = 3,
    READ_INPUT = 4,
    WRITE_BIT = 5,
    WRITE_WORD = 6,
    WRITE_BITS = 15,
    WRITE_WORDS = 16
};

void put8(Bytes& bytes, int value)
{
    bytes.push_back(static_cast<unsigned char>(value & 0xFF));
}

void put16(Bytes& bytes, int value)
{
    put8(bytes, value >> 8);
    put8(bytes, value);
}

Bytes opened(const Variable& var, Function function, int number)
{
    Bytes bytes;
    put8(bytes, var.station);
    put8(bytes, function);
    put16(bytes, number);
    return bytes;
}

bool isWords(const Variable& var)
{
    const Area* area = findArea(var.area);
    return area != nullptr && area->words;
}

/// Registers that a read of bits covers, counted from the group that holds its first bit.
int registersOfBits(int inGroup, int count)
{
    const int bits = inGroup + count;
    return bits / 16 + (bits % 16 != 0 ? 1 : 0);
}

int unitAt(const Variable& var, int position)
{
    const auto place = static_cast<size_t>(position);
    return place < var.value.size() ? var.value[place] : 0;
}

Bytes wordWrite(const Variable& var)
{
    reach(var.count == 1 ? Branch::FRAME_WRITE_WORD : Branch::FRAME_WRITE_WORDS);
    Bytes bytes = opened(var, var.count == 1 ? WRITE_WORD : WRITE_WORDS, var.addr);
    if (var.count != 1) {
        put16(bytes, var.count);
        put8(bytes, 2 * var.count);
    }
    for (int i = 0; i < var.count; ++i) {
        put8(bytes, unitAt(var, 2 * i + 1));
        put8(bytes, unitAt(var, 2 * i));
    }
    return bytes;
}

Bytes singleBitWrite(const Variable& var)
{
    const bool on = unitAt(var, 0) == 1;
    reach(on ? Branch::FRAME_WRITE_BIT_ON : Branch::FRAME_WRITE_BIT_OFF);
    Bytes bytes = opened(var, WRITE_BIT, var.addr);
    put16(bytes, on ? 0xFF00 : 0);
    return bytes;
}

Bytes manyBitsWrite(const Variable& var)
{
    reach(Branch::FRAME_WRITE_BITS);
    Bytes bytes = opened(var, WRITE_BITS, var.addr);
    put16(bytes, var.count);
    put8(bytes, (var.count + 7) / 8);
    for (int first = 0; first < var.count; first += 8) {
        int sum = 0;
        for (int i = 0; i < std::min(8, var.count - first); ++i)
            sum += unitAt(var, first + i) << i;
        put8(bytes, sum);
    }
    return bytes;
}

void countRead(const Variable& var)
{
    const bool input = var.area == "IW" || var.area == "IX";
    if (isWords(var))
        reach(input ? Branch::FRAME_READ_INPUT_WORDS : Branch::FRAME_READ_WORDS);
    else if (var.area == "MX")
        reach(Branch::FRAME_READ_MARKER_BITS);
    else
        reach(input ? Branch::FRAME_READ_INPUT_BITS : Branch::FRAME_READ_BITS);
}

} // namespace

Frame readFrame(const Variable& var)
{
    countRead(var);
    const bool input = var.area == "IW" || var.area == "IX";
    const int base = var.area == "MX" ? 3000 : 0;
    const bool words = isWords(var);
    const int first = words ? var.addr : (var.addr - base) / 16 + base;
    const int registers = words ? var.count : registersOfBits((var.addr - base) % 16, var.count);
    Frame frame;
    frame.bytes = opened(var, input ? READ_INPUT : READ_HOLDING, first);
    put16(frame.bytes, registers);
    frame.bytes = frameWith(frame.bytes);
    frame.var = var;
    if (var.station == 0) {
        reach(Branch::FRAME_READ_BROADCAST);
        return frame;
    }
    frame.recvLen = 2 * registers + 5;
    frame.dataStart = 3;
    frame.itemCount = var.count;
    return frame;
}

Frame writeFrame(const Variable& var)
{
    Frame frame;
    if (isWords(var))
        frame.bytes = wordWrite(var);
    else
        frame.bytes = var.count == 1 ? singleBitWrite(var) : manyBitsWrite(var);
    frame.bytes = frameWith(frame.bytes);
    frame.var = var;
    if (var.station == 0) reach(Branch::FRAME_WRITE_BROADCAST);
    frame.recvLen = var.station == 0 ? 0 : 8;
    return frame;
}

Frame unsendableFrame(const Variable& var)
{
    Frame frame;
    frame.unsendable = true;
    frame.recvLen = -1;
    frame.var = var;
    return frame;
}

ReplyClass classifyReply(const Frame& frame, const Bytes& reply)
{
    if (frame.unsendable) {
        reach(Branch::REPLY_TO_UNSENDABLE);
        return ReplyClass::REJECTED;
    }
    if (reply.empty() && frame.recvLen == 0) {
        reach(Branch::REPLY_NONE_DUE);
        return ReplyClass::ACKNOWLEDGED;
    }
    if (static_cast<int>(reply.size()) != frame.recvLen) {
        reach(reply.empty() ? Branch::REPLY_MISSING : Branch::REPLY_WRONG_LENGTH);
        return ReplyClass::REJECTED;
    }
    if (reply.size() < CRC_BYTES) {
        reach(Branch::REPLY_WITHOUT_CRC);
        return ReplyClass::REJECTED;
    }
    const Bytes due = frameWith(Bytes(reply.begin(), reply.end() - CRC_BYTES));
    const bool lowDiffers = due[due.size() - 2] != reply[reply.size() - 2];
    const bool highDiffers = due.back() != reply.back();
    if (lowDiffers || highDiffers) {
        if (!highDiffers) reach(Branch::REPLY_WRONG_CRC_LOW);
        if (!lowDiffers) reach(Branch::REPLY_WRONG_CRC_HIGH);
        if (lowDiffers && highDiffers) reach(Branch::REPLY_WRONG_CRC_BOTH);
        return ReplyClass::REJECTED;
    }
    reach(frame.itemCount != 0 ? Branch::REPLY_READ : Branch::REPLY_ACKNOWLEDGED);
    return frame.itemCount != 0 ? ReplyClass::READ : ReplyClass::ACKNOWLEDGED;
}

} // namespace model
