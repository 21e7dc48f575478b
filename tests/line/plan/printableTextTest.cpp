#include "plan/printableText.h"

#include <gtest/gtest.h>

namespace {

QString utf8(const char* text)
{
    return QString::fromUtf8(text);
}

} // namespace

TEST(PrintableText, ControlCharactersBecomeQuestionMarks)
{
    const struct
    {
        const char* text;
        const char* printable;
    } rows[] = {{"tank 1, \xc3\xbc", "tank 1, \xc3\xbc"},
                {"a\x1b[2Jb", "a?[2Jb"},
                {"a\r\n\tb\x7f", "a???b?"},
                {"\xc2\x9b", "?"},     // control sequence introducer in one byte
                {"\xe2\x80\xae", "?"}, // right-to-left override
                {"\xe2\x80\xa8", "?"}, // line separator
                {"\xe2\x80\xa9", "?"}, // paragraph separator
                {"\xf0\x9f\x94\xa5", "\xf0\x9f\x94\xa5"}}; // beyond 16 bits
    for (const auto& row : rows) {
        EXPECT_EQ(row.printable, printableText(utf8(row.text)).toStdString()) << row.text;
    }
}

TEST(PrintableText, HalfACodePointIsNotPrinted)
{
    const QString text = QString(QChar(0xd83d)) + QLatin1Char('a');
    const QString printable = printableText(text);
    EXPECT_EQ(2, printable.size());
    EXPECT_FALSE(printable.at(0).isSurrogate());
    EXPECT_EQ(QLatin1Char('a'), printable.at(1));
}
