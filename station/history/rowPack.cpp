#include "history/rowPack.h"

#include <QtEndian>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

enum { VARINT_BITS = 7, VARINT_MORE = 0x80, VARINT_MASK = 0x7F, BITS = 64 };
enum { QUALITY_MASK = 3, HAS_VALUE = 4, FORM_SHIFT = 3, STATES_END = 32 };
enum Form { SAME, INTEGER, FLOAT, DOUBLE };

const double LARGEST_INTEGER = 4294967295.0; // of the types of a tag

quint64 bitsOf(double value)
{
    quint64 bits = 0;
    static_assert(sizeof bits == sizeof value, "the bits of the number");
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// A nan is the same as a nan, and 0 is not -0.
bool isSame(double a, double b)
{
    return bitsOf(a) == bitsOf(b);
}

Form formOf(double value, double before)
{
    if (isSame(value, before)) return SAME;
    const bool isInteger =
        std::fabs(value) <= LARGEST_INTEGER && isSame(double(qint64(value)), value);
    if (isInteger) return INTEGER;
    const bool fitsFloat = !(std::fabs(value) > double(std::numeric_limits<float>::max()));
    if (std::isinf(value) || (fitsFloat && isSame(double(float(value)), value))) return FLOAT;
    return DOUBLE;
}

quint64 zigzag(qint64 value)
{
    return quint64(value) << 1 ^ (value < 0 ? ~quint64(0) : 0);
}

qint64 unzigzag(quint64 value)
{
    return qint64(value >> 1 ^ (value & 1 ? ~quint64(0) : 0));
}

void appendVarint(QByteArray& bytes, quint64 value)
{
    for (; value > VARINT_MASK; value >>= VARINT_BITS)
        bytes.append(char((value & VARINT_MASK) | VARINT_MORE));
    bytes.append(char(value));
}

template <typename Bits, typename Number> void appendBits(QByteArray& bytes, Number number)
{
    Bits bits = 0;
    static_assert(sizeof bits == sizeof number, "the bits of the number");
    std::memcpy(&bits, &number, sizeof bits);
    bits = qToLittleEndian(bits);
    bytes.append(reinterpret_cast<const char*>(&bits), int(sizeof bits));
}

void appendValue(QByteArray& bytes, Form form, double value)
{
    switch (form) {
    case SAME:
        return;
    case INTEGER:
        return appendVarint(bytes, zigzag(qint64(value)));
    case FLOAT:
        return appendBits<quint32>(bytes, float(value));
    case DOUBLE:
        return appendBits<quint64>(bytes, value);
    }
}

/// Reads bytes that may be anything. After a failure everything reads as 0.
class Bytes
{
public:
    explicit Bytes(const QByteArray& bytes) : m_at(bytes.constData()), m_left(size_t(bytes.size()))
    {
    }

    bool isAtEnd() const
    {
        return m_left == 0;
    }
    bool hasFailed() const
    {
        return m_hasFailed;
    }

    quint8 byte()
    {
        if (m_left == 0) {
            m_hasFailed = true;
            return 0;
        }
        --m_left;
        return quint8(*m_at++);
    }

    quint64 varint()
    {
        quint64 value = 0;
        for (int shift = 0; shift < BITS; shift += VARINT_BITS) {
            const quint8 part = byte();
            value |= quint64(part & VARINT_MASK) << shift;
            if (!(part & VARINT_MORE)) return value;
        }
        m_hasFailed = true;
        return 0;
    }

    template <typename Bits, typename Number> Number bits()
    {
        Bits read = 0;
        for (size_t i = 0; i < sizeof read; ++i)
            read = Bits(read | Bits(Bits(byte()) << (8 * i)));
        Number number = 0;
        std::memcpy(&number, &read, sizeof number);
        return number;
    }

private:
    const char* m_at;
    size_t m_left;
    bool m_hasFailed = false;
};

double valueOf(Bytes& bytes, int form, double before)
{
    switch (form) {
    case INTEGER:
        return double(unzigzag(bytes.varint()));
    case FLOAT:
        return double(bytes.bits<quint32, float>());
    case DOUBLE:
        return bytes.bits<quint64, double>();
    default:
        return before;
    }
}

/// The sum of two times or sequences, for any bytes without an overflow.
qint64 later(qint64 time, quint64 since)
{
    return qint64(quint64(time) + since);
}

} // namespace

QByteArray packedRows(const std::vector<HistoryRow>& rows)
{
    QByteArray bytes;
    HistoryRow before;
    for (const HistoryRow& row : rows) {
        const Form form = row.hasValue ? formOf(row.value, before.value) : SAME;
        appendVarint(bytes, quint64(row.sequence) - quint64(before.sequence));
        appendVarint(bytes, quint64(row.time) - quint64(before.time));
        bytes.append(char(row.quality | (row.hasValue ? HAS_VALUE : 0) | form << FORM_SHIFT));
        appendValue(bytes, form, row.value);
        const double value = row.hasValue ? row.value : before.value;
        before = row;
        before.value = value;
    }
    return bytes;
}

std::optional<std::vector<HistoryRow>> unpackedRows(const QByteArray& packed)
{
    Bytes bytes(packed);
    std::vector<HistoryRow> rows;
    HistoryRow row;
    while (!bytes.isAtEnd()) {
        row.sequence = later(row.sequence, bytes.varint());
        row.time = later(row.time, bytes.varint());
        const int state = bytes.byte();
        row.quality = Quality(state & QUALITY_MASK);
        row.hasValue = (state & HAS_VALUE) != 0;
        row.value = valueOf(bytes, state >> FORM_SHIFT, row.value);
        if (bytes.hasFailed() || state >= STATES_END || row.quality > BAD) return std::nullopt;
        rows.push_back(row);
    }
    return rows;
}
