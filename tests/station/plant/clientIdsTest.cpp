// The names that stations have at a broker, which throws the first of two clients of one name out.

#include "plant/plantSettings.h"

#include <gtest/gtest.h>

#include <map>

namespace {

PlantSettings settingsOf(const QString& group, const QString& node)
{
    PlantSettings settings;
    settings.group = group;
    settings.node = node;
    return settings;
}

std::string sparkplugId(const char* group, const char* node)
{
    return sparkplugClientId(settingsOf(QLatin1String(group), QLatin1String(node))).toStdString();
}

/// All texts of one to three of these parts.
std::vector<QString> names()
{
    const std::vector<QString> parts = {QLatin1String("a"), QLatin1String("-"), QLatin1String("1"),
                                        QLatin1String("3"), QLatin1String("json")};
    std::vector<QString> all = parts;
    size_t begin = 0;
    for (int length = 2; length <= 3; ++length) {
        const size_t end = all.size();
        for (; begin < end; ++begin)
            for (const QString& part : parts)
                all.push_back(all[begin] + part);
    }
    return all;
}

} // namespace

TEST(ClientIds, AreMadeOfGroupAndNode)
{
    EXPECT_EQ("kakb-works-station", sparkplugId("works", "station"));
    EXPECT_EQ(
        "kakb-works-station-json",
        jsonClientId(settingsOf(QLatin1String("works"), QLatin1String("station"))).toStdString());
}

TEST(ClientIds, TellWhichHyphenPartsTheTwo)
{
    EXPECT_EQ("kakb-a-b-c-3", sparkplugId("a-b", "c"));
    EXPECT_EQ("kakb-a-b-c-1", sparkplugId("a", "b-c"));
    EXPECT_EQ("kakb-a--b-2", sparkplugId("a-", "b"));
    EXPECT_EQ("kakb-a--b-1", sparkplugId("a", "-b"));
}

TEST(ClientIds, OfTwoStationsAreNeverAlike)
{
    std::map<QString, std::string> owners;
    const std::vector<QString> all = names();
    ASSERT_EQ(155u, all.size());
    for (const QString& group : all) {
        for (const QString& node : all) {
            const PlantSettings settings = settingsOf(group, node);
            const std::string owner = group.toStdString() + " and " + node.toStdString();
            for (const QString& id : {sparkplugClientId(settings), jsonClientId(settings)}) {
                const auto put = owners.insert({id, owner});
                ASSERT_TRUE(put.second)
                    << id.toStdString() << " is of " << put.first->second << ", and of " << owner;
            }
        }
    }
}

TEST(ClientIds, AreTheUsersWhereThereIsOne)
{
    PlantSettings settings = settingsOf(QLatin1String("a-b"), QLatin1String("c"));
    settings.clientId = QLatin1String("press 7");
    EXPECT_EQ("press 7", sparkplugClientId(settings).toStdString());
    EXPECT_EQ("press 7-json", jsonClientId(settings).toStdString());
}
