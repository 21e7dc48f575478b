#include "broker/topicLevels.h"

#include <gtest/gtest.h>

#include <QSet>

namespace {

using Texts = std::vector<std::string>;

Texts levelsOf(const Texts& names)
{
    std::vector<QString> texts;
    for (const std::string& name : names)
        texts.push_back(QString::fromStdString(name));
    Texts levels;
    for (const QString& level : topicLevels(texts))
        levels.push_back(level.toStdString());
    return levels;
}

} // namespace

TEST(TopicLevels, AreTheNamesThemselvesWhereTheyFit)
{
    EXPECT_EQ((Texts{"level 1", "Kühler.süd", "$x", "a\\b"}),
              levelsOf({"level 1", "Kühler.süd", "$x", "a\\b"}));
}

TEST(TopicLevels, HoldNoWildcardAndNoFurtherLevel)
{
    EXPECT_EQ((Texts{"a_b", "_c", "d_", "___"}), levelsOf({"a/b", "+c", "d#", "+/#"}));
}

TEST(TopicLevels, HoldNothingThatABrokerClosesTheConnectionOver)
{
    EXPECT_EQ((Texts{"a_b", "c_d", "e_f", "g_h"}), levelsOf({std::string("a\0b", 3),
                                                             "c\x1F"
                                                             "d",
                                                             "e\xC2\x85"
                                                             "f",
                                                             "g\xEF\xBF\xBFh"}));
    EXPECT_EQ(QString(QChar(0xFFFD)), topicLevel(QString(QChar(0xD800)))); // half a character
}

TEST(TopicLevels, AreNeverEmpty)
{
    EXPECT_EQ((Texts{"_"}), levelsOf({""}));
}

TEST(TopicLevels, DifferNotByCaseAlone)
{
    EXPECT_EQ((Texts{"Level", "level-2", "LEVEL-3"}), levelsOf({"Level", "level", "LEVEL"}));
    EXPECT_EQ((Texts{"Öl", "öl-2"}), levelsOf({"Öl", "öl"}));
}

TEST(TopicLevels, ThatAreNamesAreNotTakenByOtherNames)
{
    EXPECT_EQ((Texts{"a_b-3", "a_b", "a_b-2"}), levelsOf({"a/b", "a_b", "a_b-2"}));
    EXPECT_EQ((Texts{"a_b-2", "A_B-3", "a_b"}), levelsOf({"a/b", "A#B", "a_b"}));
}

TEST(TopicLevels, FitATopicHoweverLongTheNameIs)
{
    const QString name(30000, QLatin1Char('x'));
    const std::vector<QString> levels = topicLevels({name, name + QLatin1Char('y')});
    EXPECT_NE(levels[0], levels[1]);
    for (const QString& level : levels)
        EXPECT_LT(level.toUtf8().size(), 65535 / 5);
}

TEST(TopicLevels, OfManyAlikeNamesAllDiffer)
{
    std::vector<QString> names;
    for (int number = 0; number < 4096; ++number) {
        QString name;
        for (int bit = 0; bit < 12; ++bit)
            name += QLatin1Char((number >> bit & 1) != 0 ? '/' : '+');
        names.push_back(name);
    }
    QSet<QString> folded;
    for (const QString& level : topicLevels(names))
        folded.insert(level.toCaseFolded());
    EXPECT_EQ(4096, folded.size());
}
