#include "cappedList.h"
#include "driverFixture.h"

#include <cstring>

namespace {

enum { CAP = 513 };

class CappedList : public DriverTest
{
protected:
    /// Fills the list with words 0, 1, 2 … of station 1.
    void fill(int entries)
    {
        for (int i = 0; i < entries; ++i)
            list.append(variable(1, "MW", i, 1));
    }

    void add(const VARIABLE& var)
    {
        coalesceIntoCappedList(list, var);
    }

    int size() const
    {
        return int(list.size());
    }

    QList<VARIABLE> list;
};

VARIABLE numbered(int varId, const char* regName, int addr)
{
    VARIABLE made = variable(1, regName, addr, 1);
    made.varId = varId;
    return made;
}

const VARIABLE AT_TEN = variable(1, "MW", 10, 1);

const VARIABLE NEIGHBOURS_OF_AT_TEN[] = {
    variable(2, "MW", 10, 1), variable(1, "QW", 10, 1),   variable(1, "mw", 10, 1),
    variable(1, "MW", 11, 1), variable(1, "MW_W", 10, 1), variable(1, "MW", 10, 2),
};

} // namespace

TEST_F(CappedList, TheHeadIsNeverReplaced)
{
    add(numbered(1, "MW", 10));
    ASSERT_EQ(1, size());
    add(numbered(2, "MW", 10));
    ASSERT_EQ(2, size());
    EXPECT_EQ(1, list.at(0).varId);
    EXPECT_EQ(2, list.at(1).varId);
}

TEST_F(CappedList, AnEqualEntryBehindTheHeadIsReplaced)
{
    add(numbered(1, "MW", 0));
    add(numbered(2, "MW", 10));
    add(numbered(3, "MW", 20));
    add(numbered(4, "MW", 10));
    ASSERT_EQ(3, size());
    EXPECT_EQ(4, list.at(1).varId);
    EXPECT_EQ(3, list.at(2).varId);
}

TEST_F(CappedList, AnEntryIsReplacedWithAllItsValueBytes)
{
    fill(3);
    VARIABLE fresh = variable(1, "MW", 1, 1);
    std::memset(fresh.value, 0x5A, sizeof fresh.value);
    add(fresh);
    ASSERT_EQ(3, size());
    EXPECT_EQ(0, std::memcmp(fresh.value, list.at(1).value, sizeof fresh.value));
}

TEST_F(CappedList, OfSeveralEqualEntriesTheNewestIsReplaced)
{
    list.append(numbered(1, "MW", 10));
    list.append(numbered(2, "MW", 10));
    list.append(numbered(3, "MW", 10));
    list.append(numbered(4, "MW", 20));
    add(numbered(5, "MW", 10));
    ASSERT_EQ(4, size());
    EXPECT_EQ(2, list.at(1).varId);
    EXPECT_EQ(5, list.at(2).varId);
}

TEST_F(CappedList, EntriesThatDifferInAnyPartOfTheKeyStay)
{
    for (const VARIABLE& other : NEIGHBOURS_OF_AT_TEN) {
        list.clear();
        fill(1);
        list.append(other);
        add(AT_TEN);
        SCOPED_TRACE(other.regName.toStdString() + " " + std::to_string(other.addr));
        ASSERT_EQ(3, size());
        EXPECT_TRUE(namesSameBlock(other, list.at(1)));
        EXPECT_TRUE(namesSameBlock(AT_TEN, list.at(2)));
    }
}

TEST_F(CappedList, EveryFieldButTheIdAndTheValueIsPartOfTheKey)
{
    EXPECT_TRUE(namesSameBlock(numbered(1, "MW", 10), numbered(2, "MW", 10)));
    EXPECT_TRUE(namesSameBlock(AT_TEN, variable(1, "MW", 10, 1, {1, 2, 3})));
    for (const VARIABLE& other : NEIGHBOURS_OF_AT_TEN)
        EXPECT_FALSE(namesSameBlock(AT_TEN, other));
}

TEST_F(CappedList, TheListGrowsToItsCap)
{
    fill(CAP - 1);
    add(variable(1, "QW", 0, 1));
    ASSERT_EQ(CAP, size());
    EXPECT_EQ(511, list.at(511).addr);
    EXPECT_EQ("QW", list.at(512).regName.toStdString());
}

TEST_F(CappedList, AFullListTakesTheVariableInPlaceOfItsLast)
{
    fill(CAP);
    add(numbered(1, "QW", 0));
    add(numbered(2, "QW", 1));
    ASSERT_EQ(CAP, size());
    EXPECT_EQ(511, list.at(511).addr);
    EXPECT_EQ(2, list.at(512).varId);
    EXPECT_EQ(1, list.at(512).addr);
}

TEST_F(CappedList, AFullListStillReplacesAnEqualEntryInPlace)
{
    fill(CAP);
    add(numbered(9, "MW", 1));
    ASSERT_EQ(CAP, size());
    EXPECT_EQ(9, list.at(1).varId);
    EXPECT_EQ(512, list.at(512).addr);
}

TEST_F(CappedList, ARepeatOfAFullListsHeadReplacesTheLast)
{
    fill(CAP);
    add(numbered(9, "MW", 0));
    ASSERT_EQ(CAP, size());
    EXPECT_EQ(0, list.at(0).varId);
    EXPECT_EQ(9, list.at(512).varId);
}

TEST_F(CappedList, AListBeyondItsCapIsOverwrittenAtTheCap)
{
    fill(CAP + 2);
    add(variable(1, "QW", 7, 1));
    ASSERT_EQ(CAP + 2, size());
    EXPECT_EQ("QW", list.at(512).regName.toStdString());
    EXPECT_EQ(513, list.at(513).addr);
}
