#include "output/keyInput.h"

#include "plan/printableText.h"

namespace {

enum : unsigned char { ESCAPE_BYTE = 0x1B, DELETE_BYTE = 0x7F, FIRST_PRINTABLE = 0x20 };
enum { LONGEST_SEQUENCE = 32 };

struct Sequence
{
    const char* bytes; ///< behind the escape byte
    Key::Kind kind;
};

const Sequence SEQUENCES[] = {
    {"[A", Key::UP},       {"OA", Key::UP},    {"[B", Key::DOWN},       {"OB", Key::DOWN},
    {"[5~", Key::PAGE_UP}, {"[H", Key::HOME},  {"[6~", Key::PAGE_DOWN}, {"OH", Key::HOME},
    {"[1~", Key::HOME},    {"[7~", Key::HOME}, {"[F", Key::END},        {"OF", Key::END},
    {"[4~", Key::END},     {"[8~", Key::END},
};

unsigned char byteAt(const QByteArray& bytes, int at)
{
    return static_cast<unsigned char>(bytes.at(at));
}

/// Length of the sequence at the start of the bytes; 0: more bytes are needed.
int sequenceLength(const QByteArray& bytes)
{
    if (bytes.size() < 2) return 0;
    const char second = bytes.at(1);
    if (second == 'O') return bytes.size() < 3 ? 0 : 3;
    if (second != '[') return 1; // the Escape key, then another key
    for (int at = 2; at < bytes.size(); ++at) {
        const unsigned char byte = byteAt(bytes, at);
        if (byte >= 0x40 && byte <= 0x7E) return at + 1;
        if (byte < FIRST_PRINTABLE || byte > 0x7E) return at; // broken off
    }
    return bytes.size() < LONGEST_SEQUENCE ? 0 : int(bytes.size());
}

/// Length of the UTF-8 character that begins with the byte; 1 for a byte that begins none.
int characterLength(unsigned char first)
{
    if (first >= 0xF0 && first <= 0xF4) return 4;
    if (first >= 0xE0 && first < 0xF0) return 3;
    return first >= 0xC2 && first < 0xE0 ? 2 : 1;
}

int lengthOfFirstKey(const QByteArray& bytes)
{
    if (byteAt(bytes, 0) == ESCAPE_BYTE) return sequenceLength(bytes);
    const int length = characterLength(byteAt(bytes, 0));
    for (int at = 1; at < length; ++at) {
        if (at >= bytes.size()) return 0;
        if ((byteAt(bytes, at) & 0xC0) != 0x80) return at; // broken off
    }
    return length;
}

Key keyOf(const QByteArray& bytes)
{
    Key key;
    const unsigned char first = byteAt(bytes, 0);
    if (first == ESCAPE_BYTE) {
        if (bytes.size() == 1) key.kind = Key::ESCAPE;
        for (const Sequence& known : SEQUENCES) {
            if (bytes.mid(1) == known.bytes) key.kind = known.kind;
        }
        return key;
    }
    if (first == '\r' || first == '\n') {
        key.kind = Key::ENTER;
    } else if (first == DELETE_BYTE || first == '\b') {
        key.kind = Key::BACKSPACE;
    } else if (first >= FIRST_PRINTABLE) {
        const QString text = QString::fromUtf8(bytes);
        if (text.contains(QChar(QChar::ReplacementCharacter)) || printableText(text) != text)
            return key;
        key.kind = Key::TEXT;
        key.text = text;
    }
    return key;
}

} // namespace

std::vector<Key> KeyReader::read(const QByteArray& bytes)
{
    m_rest += bytes;
    std::vector<Key> keys;
    while (!m_rest.isEmpty()) {
        const int length = lengthOfFirstKey(m_rest);
        if (length == 0) break;
        keys.push_back(keyOf(m_rest.left(length)));
        m_rest.remove(0, length);
    }
    return keys;
}

std::vector<Key> KeyReader::pause()
{
    std::vector<Key> keys;
    if (m_rest.size() == 1 && byteAt(m_rest, 0) == ESCAPE_BYTE) keys.push_back(keyOf(m_rest));
    m_rest.clear();
    return keys;
}
