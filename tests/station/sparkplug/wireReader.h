#ifndef WIRE_READER_H
#define WIRE_READER_H

#include <QByteArray>

#include <stdexcept>
#include <vector>

/// One field of a protobuf message, as the encoding rules tell it, without any definition.
struct WireField
{
    enum Kind { VARINT = 0, EIGHT_BYTES = 1, BYTES = 2, FOUR_BYTES = 5 };

    quint64 number = 0;
    Kind kind = VARINT;
    quint64 value = 0; ///< of all kinds but BYTES, where it is the length
    QByteArray bytes;  ///< of BYTES
};

/// Reads a message field by field; throws where the rules are broken. A varint that is longer than
/// it must be breaks them here.
class WireReader
{
public:
    static std::vector<WireField> fields(const QByteArray& message)
    {
        WireReader reader(message);
        std::vector<WireField> found;
        while (reader.m_at < message.size())
            found.push_back(reader.field());
        return found;
    }

private:
    explicit WireReader(const QByteArray& message) : m_message(message) {}

    WireField field()
    {
        const quint64 key = varint();
        WireField field;
        field.number = key >> 3;
        field.kind = static_cast<WireField::Kind>(key & 7);
        switch (field.kind) {
        case WireField::VARINT:
            field.value = varint();
            return field;
        case WireField::EIGHT_BYTES:
            field.value = littleEndian(8);
            return field;
        case WireField::FOUR_BYTES:
            field.value = littleEndian(4);
            return field;
        case WireField::BYTES:
            field.value = varint();
            field.bytes = take(field.value);
            return field;
        }
        throw std::runtime_error("an unknown kind of field");
    }

    quint64 varint()
    {
        quint64 value = 0;
        for (int shift = 0; shift < 64; shift += 7) {
            const auto byte = static_cast<quint8>(take(1).at(0));
            value |= static_cast<quint64>(byte & 0x7F) << shift;
            if (byte == 0 && shift > 0) throw std::runtime_error("a varint that is too long");
            if (byte < 0x80) return value;
        }
        throw std::runtime_error("a varint without an end");
    }

    quint64 littleEndian(int bytes)
    {
        quint64 value = 0;
        for (int i = 0; i < bytes; ++i)
            value |= static_cast<quint64>(static_cast<quint8>(take(1).at(0))) << (8 * i);
        return value;
    }

    QByteArray take(quint64 count)
    {
        if (count > static_cast<quint64>(m_message.size() - m_at))
            throw std::runtime_error("the message ends within a field");
        const QByteArray taken = m_message.mid(m_at, static_cast<int>(count));
        m_at += static_cast<int>(count);
        return taken;
    }

    const QByteArray m_message;
    int m_at = 0;
};

/// The fields with this number, in their order.
inline std::vector<WireField> fieldsOf(const QByteArray& message, quint64 number)
{
    std::vector<WireField> found;
    for (const WireField& field : WireReader::fields(message)) {
        if (field.number == number) found.push_back(field);
    }
    return found;
}

#endif
