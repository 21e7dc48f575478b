#ifndef JSON_KEYS_H
#define JSON_KEYS_H

#include <QByteArray>
#include <QString>

/// Why a JSON text from a stranger is not handed to QJsonDocument, in words; empty: nothing speaks
/// against it, though it may be no JSON. Call it first: Qt 5 never gives back the memory of an
/// object or array whose key stands twice, so a stranger could use up the memory of the station.
///
/// - A key stands twice in an object.
/// - A key has an escape. No key of ours has one, and it may be another spelling of a key.
/// - Objects and arrays are nested deeper than MOST_NESTED.
QString jsonKeyProblem(const QByteArray& json);

enum { MOST_NESTED = 16 };

#endif
