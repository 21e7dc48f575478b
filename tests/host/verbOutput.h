#ifndef VERB_OUTPUT_H
#define VERB_OUTPUT_H

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>

/// Calls `print` with a file.
/// @return the bytes printed to the file
inline std::string printed(const std::function<void(std::FILE*)>& print)
{
    char* bytes = nullptr;
    size_t length = 0;
    std::FILE* const out = open_memstream(&bytes, &length);
    print(out);
    std::fclose(out);
    const std::string all(bytes, length);
    std::free(bytes);
    return all;
}

/// The JSON object of a text with one line.
inline QJsonObject objectOf(const std::string& line)
{
    EXPECT_EQ(line.size() - 1, line.find('\n')) << line;
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(line));
    EXPECT_TRUE(document.isObject()) << line;
    return document.object();
}

#endif
