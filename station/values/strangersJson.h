#ifndef STRANGERS_JSON_H
#define STRANGERS_JSON_H

#include <QByteArray>
#include <QJsonObject>
#include <QString>

/// The object in a text from a stranger, or why there is none.
struct StrangersJson
{
    QJsonObject object;
    QString problem; ///< what the text is or is not, "is no JSON object"; empty: there is none
};

/// Reads JSON from a stranger: whatever comes, it costs no more than a moment and gives back its
/// memory, see jsonKeyProblem(), and its numbers are those of jsonNumbersOf(). It is UTF-8 without
/// a byte order mark (RFC 8259, 8.1).
StrangersJson strangersObject(const QByteArray& text);

#endif
