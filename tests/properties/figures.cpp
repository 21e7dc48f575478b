#include "figures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <vector>

namespace {

struct Figure
{
    std::string what;
    long long value;
    long long due;
    bool isMost;
};

/// Of the running test, in the order in which it named them first.
std::vector<Figure> figures;

Figure& figureOf(const std::string& what, long long due, bool isMost)
{
    const auto found = std::find_if(figures.begin(), figures.end(),
                                    [&](const Figure& one) { return one.what == what; });
    if (found != figures.end()) return *found;
    figures.push_back({what, 0, due, isMost});
    return figures.back();
}

class FigureLine : public testing::EmptyTestEventListener
{
    void OnTestStart(const testing::TestInfo&) override
    {
        figures.clear();
    }

    void OnTestEnd(const testing::TestInfo& test) override
    {
        if (!test.result()->Passed()) return;
        print();
        EXPECT_FALSE(figures.empty()) << "it counts nothing";
        for (const Figure& figure : figures)
            EXPECT_GE(figure.value, figure.due) << figure.what;
    }

    static void print()
    {
        const char* separator = "";
        for (const Figure& figure : figures) {
            std::cout << separator << (figure.isMost ? "at most " : "") << figure.value << " "
                      << figure.what;
            separator = ", ";
        }
        std::cout << std::endl;
    }
};

const bool listening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new FigureLine);
    return true;
}();

} // namespace

void countCase(std::initializer_list<const char*> due)
{
    tally("cases");
    for (const char* what : due)
        tally(what, 0);
}

void tally(const std::string& what, long long times)
{
    figureOf(what, 1, false).value += times;
}

void tallyMost(const std::string& what, long long seen, long long due)
{
    Figure& figure = figureOf(what, due, true);
    figure.value = std::max(figure.value, seen);
}
