#ifndef KEY_INPUT_H
#define KEY_INPUT_H

#include <QByteArray>
#include <QString>

#include <vector>

/// A key of a terminal.
struct Key
{
    enum Kind {
        TEXT,
        ENTER,
        BACKSPACE,
        ESCAPE,
        UP,
        DOWN,
        PAGE_UP,
        PAGE_DOWN,
        HOME,
        END,
        OTHER ///< a key without a meaning here
    };

    Kind kind = OTHER;
    QString text; ///< of TEXT: one printable character
};

/// Tells keys from the bytes that a terminal sends: UTF-8, and the sequences of ECMA-48 and of the
/// VT family for keys without a character. One thread uses it.
///
/// The Escape key sends the byte that begins every sequence. Only time tells them apart: a
/// sequence comes in one piece, so a pause behind the byte makes it the Escape key.
///
///     bytes --read()--> keys, and at most one incomplete sequence or character
///     no byte for PAUSE_MS --pause()--> the incomplete rest: the Escape key, or nothing
class KeyReader
{
public:
    enum { PAUSE_MS = 50 };

    /// The keys that are complete now.
    std::vector<Key> read(const QByteArray& bytes);

    /// Whether an incomplete key waits for more bytes or for the pause.
    bool isIncomplete() const
    {
        return !m_rest.isEmpty();
    }

    /// No byte came for PAUSE_MS.
    std::vector<Key> pause();

private:
    QByteArray m_rest; ///< bytes of an incomplete key
};

#endif
