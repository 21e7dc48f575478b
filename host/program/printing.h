#ifndef PRINTING_H
#define PRINTING_H

#include <QJsonObject>
#include <QString>

#include <cstdio>
#include <exception>

QString text(const char* latin1);

/// Both in UTF-8, the object on one line.
void printLine(std::FILE* out, const QString& line);
void printObject(std::FILE* out, const QJsonObject& object);

/// Why the program ends, to standard error. Of a file all bad lines are told.
void printFailure(const std::exception& error);

#endif
