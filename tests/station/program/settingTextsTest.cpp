#include "program/settingTexts.h"

#include <gtest/gtest.h>

namespace {

QString latin1(const char* text)
{
    return QString::fromLatin1(text);
}

bool isLinkName(const char* text)
{
    return linkNameProblem(latin1(text)).isEmpty();
}

bool isHostName(const QString& text)
{
    return hostNameProblem(text).isEmpty();
}

} // namespace

TEST(SettingTexts, ASizeHasAUnit)
{
    EXPECT_EQ(qint64(256) * 1024 * 1024, sizeBytes(latin1("256MiB")));
    EXPECT_EQ(1024, sizeBytes(latin1("1KiB")));
    EXPECT_EQ(qint64(3) * 1024 * 1024 * 1024, sizeBytes(latin1("3GiB")));
    for (const char* const text : {"", "256", "256MB", "256 MiB", "MiB", "-1MiB", "1.5MiB", "1mib",
                                   "1MiB\n", "9999999999KiB"})
        EXPECT_FALSE(sizeBytes(latin1(text))) << text;
}

TEST(SettingTexts, ASizeEndsAt1024GiB)
{
    EXPECT_TRUE(sizeBytes(latin1("1024GiB")));
    EXPECT_FALSE(sizeBytes(latin1("1025GiB")));
    EXPECT_FALSE(sizeBytes(latin1("999999999GiB")));
}

TEST(SettingTexts, ALinksNameIsSomeTextWithoutASlash)
{
    EXPECT_TRUE(isLinkName("line 1"));
    EXPECT_TRUE(isLinkName("<b>"));
    EXPECT_TRUE(linkNameProblem(QString::fromUtf8("Füllung")).isEmpty());
    EXPECT_FALSE(isLinkName(""));
    EXPECT_FALSE(isLinkName("a/b"));
    EXPECT_FALSE(isLinkName("a\nb"));
    EXPECT_FALSE(isLinkName("a\x7f"));
    EXPECT_FALSE(linkNameProblem(QString(QChar(0))).isEmpty());
}

TEST(SettingTexts, AStationsNameMayHaveASlash)
{
    EXPECT_TRUE(nameProblem(latin1("hall 3/4")).isEmpty());
    EXPECT_FALSE(nameProblem(latin1("\t")).isEmpty());
}

TEST(SettingTexts, AHostNameHasNoPortAndNoBlank)
{
    EXPECT_TRUE(isHostName(latin1("panel.example")));
    EXPECT_TRUE(isHostName(latin1("Panel-7")));
    EXPECT_TRUE(isHostName(QString(253, QLatin1Char('a'))));
    EXPECT_FALSE(isHostName(QString(254, QLatin1Char('a'))));
    for (const char* const text : {"", "panel:80", "a b", "-a", "a-", ".a", "a_b", "http://a"})
        EXPECT_FALSE(isHostName(latin1(text))) << text;
}
