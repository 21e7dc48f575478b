#ifndef JSON_TEXT_H
#define JSON_TEXT_H

#include <QByteArray>
#include <QString>

/// Writes a JSON document as text, value by value, in the order of the calls. It puts the commas
/// and escapes the texts; the caller pairs begins with ends and gives each value of an object a
/// key. A document is one line: it has no line break in it.
///
///     JsonText json;
///     json.beginObject().key("link").text(name).key("up").boolean(true).endObject();
///
/// Thousands of values are written each second, so a writer does not build a tree first.
class JsonText
{
public:
    JsonText& beginObject();
    JsonText& endObject();
    JsonText& beginArray();
    JsonText& endArray();

    /// @param name  ASCII without characters that JSON escapes
    JsonText& key(const char* name);

    JsonText& text(const QString& text);

    /// A text that may be missing: null when it is empty.
    JsonText& textOrNull(const QString& given);

    /// @param text  ASCII without characters that JSON escapes, such as the word of a state
    JsonText& word(const char* text);

    JsonText& integer(qint64 value);

    /// The fewest digits that give the same number again. JSON has no numbers for these three:
    /// they are written as the texts "nan", "inf" and "-inf".
    JsonText& number(double value);

    JsonText& boolean(bool value);
    JsonText& null();

    /// @param json  a value that is JSON already
    JsonText& raw(const QByteArray& json);

    /// What has been written so far.
    const QByteArray& document() const
    {
        return m_json;
    }

private:
    void separate();

    QByteArray m_json;
    bool m_hasValueAhead = false; ///< a comma is due before the next value or key
};

#endif
