#ifndef STRANGERS_JSON_H
#define STRANGERS_JSON_H

#include <QByteArray>
#include <QJsonObject>
#include <QString>

/// The object in the body of a request, or why there is none.
struct StrangersJson
{
    QJsonObject object;
    QString problem; ///< a sentence about "the body"; empty: there is none
};

/// Reads JSON from a stranger: whatever comes, it costs no more than a moment and gives back its
/// memory, see jsonKeyProblem(), and its numbers are those of jsonNumbersOf().
StrangersJson strangersObject(const QByteArray& body);

#endif
