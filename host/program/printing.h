#ifndef PRINTING_H
#define PRINTING_H

#include <QJsonObject>
#include <QString>

#include <cstdio>
#include <exception>
#include <string>

/// A QString from Latin-1 text.
QString text(const char* latin1);

/// A QString from UTF-8 text, such as an argument of the command line.
QString text(const std::string& utf8);

/// Print a line or an object in UTF-8. The object takes one line.
void printLine(std::FILE* out, const QString& line);
void printObject(std::FILE* out, const QJsonObject& object);

/// Prints the reason of a failure to standard error. The reason may have several lines, one for
/// each bad line of a file.
void printFailure(const std::exception& error);

#endif
