#include "verbs/stationList.h"

#include <gtest/gtest.h>

namespace {

std::vector<int> stations(const char* text)
{
    return stationList(QLatin1String(text)).value_or(std::vector<int>());
}

} // namespace

TEST(StationListTest, TakesNumbersAndRanges)
{
    EXPECT_EQ(stations("5"), std::vector<int>({5}));
    EXPECT_EQ(stations("7-9,1,3"), std::vector<int>({1, 3, 7, 8, 9}));
    EXPECT_EQ(stations("4,2-5,4"), std::vector<int>({2, 3, 4, 5}));
    EXPECT_EQ(stations("9-9"), std::vector<int>({9}));
    EXPECT_EQ(stations("1-247").size(), 247U);
}

TEST(StationListTest, RefusesOtherTexts)
{
    for (const char* const text : {"", "0", "248", "1-248", "0-5", "9-7", "1,", ",1", "1--3", "-3",
                                   "3-", "1-2-3", "a", "+1", " 1", "1.5", "99999999999"})
        EXPECT_FALSE(stationList(QLatin1String(text))) << text;
}
