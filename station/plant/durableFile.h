#ifndef DURABLE_FILE_H
#define DURABLE_FILE_H

#include <QByteArray>
#include <QString>

/// Replaces a small file as a whole. Behind a crash or a loss of power it holds the old bytes or
/// the new ones; once this has returned, the new ones.
/// @return why it failed, in words; empty: it is done
QString writeDurably(const QString& fileName, const QByteArray& bytes);

#endif
