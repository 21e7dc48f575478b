#include "api/historySpan.h"

#include "api/apiError.h"

#include <gtest/gtest.h>

namespace {

const qint64 NOW = 1700000000000;

HistorySpan spanOf(const HttpRequest::Pairs& query)
{
    HttpRequest request;
    request.query = query;
    return historySpanOf(request, NOW);
}

std::string refusalOf(const HttpRequest::Pairs& query)
{
    try {
        spanOf(query);
    } catch (const ApiError& error) {
        return std::to_string(error.status) + " " + error.what();
    }
    return "none";
}

} // namespace

TEST(HistorySpan, IsTheLastHourInSixHundred)
{
    const HistorySpan span = spanOf({});
    EXPECT_EQ(NOW - 3600000, span.from);
    EXPECT_EQ(NOW, span.until);
    EXPECT_EQ(600, span.points);
}

TEST(HistorySpan, EndsWhereItIsTold)
{
    const HistorySpan span = spanOf({{"to", "5000000"}, {"points", "10000"}});
    EXPECT_EQ(1400000, span.from);
    EXPECT_EQ(5000000, span.until);
    EXPECT_EQ(10000, span.points);
    EXPECT_EQ(0, spanOf({{"to", "1000"}}).from);
    EXPECT_EQ(NOW, spanOf({{"from", "7"}}).until);
}

TEST(HistorySpan, RefusesWhatIsNoNumber)
{
    for (const char* const text : {"abc", "1.5", "1e3", " 5", "5 ", "0x10", "-", "+5"})
        EXPECT_EQ("400 from is no whole number", refusalOf({{"from", QByteArray(text)}})) << text;
    EXPECT_EQ("400 to is no whole number", refusalOf({{"to", QByteArray("1\0002", 3)}}));
}

TEST(HistorySpan, RefusesNumbersOutOfRange)
{
    EXPECT_EQ("422 points is not from 1 to 10000", refusalOf({{"points", "0"}}));
    EXPECT_EQ("422 points is not from 1 to 10000", refusalOf({{"points", "10001"}}));
    EXPECT_EQ("422 points is not from 1 to 10000", refusalOf({{"points", "-1"}}));
    EXPECT_EQ("422 from is not from 0 to 253402300799999", refusalOf({{"from", "-1"}}));
    EXPECT_EQ("422 to is not from 0 to 253402300799999",
              refusalOf({{"to", "99999999999999999999999999"}}));
    EXPECT_EQ("422 to is not from 0 to 253402300799999", refusalOf({{"to", "253402300800000"}}));
}

TEST(HistorySpan, RefusesAnEmptySpan)
{
    const std::string empty = "422 \"from\" does not lie before \"to\"";
    EXPECT_EQ(empty, refusalOf({{"from", "5"}, {"to", "5"}}));
    EXPECT_EQ(empty, refusalOf({{"from", "6"}, {"to", "5"}}));
    EXPECT_EQ(empty, refusalOf({{"to", "0"}}));
}
