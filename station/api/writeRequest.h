#ifndef WRITE_REQUEST_H
#define WRITE_REQUEST_H

#include <QByteArray>
#include <QJsonValue>
#include <QString>

/// The body of a write, {"link","tag","value"}.
struct WriteRequest
{
    QString link;
    QString tag;
    QJsonValue value; ///< not yet looked at
};

/// @throws ApiError BAD_REQUEST when the body has another form
WriteRequest writeRequestOf(const QByteArray& body);

#endif
