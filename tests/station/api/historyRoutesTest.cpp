#include "apiFixture.h"

namespace {

class HistoryRoutes : public ApiTest
{
};

} // namespace

TEST_F(HistoryRoutes, SayWhenThereIsNoHistory)
{
    const std::string none = "503 this station keeps no history: it runs with --no-history";
    EXPECT_EQ(none, summaryOf(get("/api/v1/history", {{"link", "left"}, {"tag", "level"}})));
    EXPECT_EQ(none, summaryOf(get("/api/v1/history.csv")));
}
