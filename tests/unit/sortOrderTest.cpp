#include "sortOrder.h"

#include "driverFixture.h"
#include "listTexts.h"

#include <climits>

namespace {

_RCP_VAR_PRO numbered(const char* area, int addr, int number, int station = 0)
{
    return recipeVariable(0, station, area, addr, 1, number);
}

std::vector<int> numbersIn(const QVector<_RCP_VAR_PRO>& records)
{
    std::vector<int> out;
    for (int i = 0; i < int(records.size()); ++i)
        out.push_back(records.at(i).bufOffset);
    return out;
}

} // namespace

class SortOrder : public DriverTest
{
};

TEST_F(SortOrder, EachAreaWeighs65535MoreThanTheOneBefore)
{
    int expected = 0;
    for (const char* area : {"MW", "IW", "QW", "MX", "IX", "QX"}) {
        SCOPED_TRACE(area);
        EXPECT_EQ(expected, getRegAddressWeight(0, text(area), 0));
        EXPECT_EQ(expected + 12, getRegAddressWeight(0, text(area), 12));
        expected += 65535;
    }
}

TEST_F(SortOrder, AStationWeighsSixAreas)
{
    // (1 x 6 + 0) x 65535 + 3000 and (2 x 6 + 5) x 65535 + 4095
    EXPECT_EQ(396210, getRegAddressWeight(1, text("MW"), 3000));
    EXPECT_EQ(1118190, getRegAddressWeight(2, text("QX"), 4095));
}

TEST_F(SortOrder, AnAbsentNameWeighsOneAreaLess)
{
    // (1 x 6 - 1) x 65535 + 7
    EXPECT_EQ(327682, getRegAddressWeight(1, text("ZZ"), 7));
    EXPECT_EQ(-65535, getRegAddressWeight(0, text("mw"), 0));
}

TEST_F(SortOrder, PositionsAreThoseOfTheDriversOwnNames)
{
    driver.regNames.clear();
    driver.regNames.append(text("IX"));
    driver.regNames.append(text("MW"));
    // (3 x 2 + 1) x 65535 + 5
    EXPECT_EQ(458750, getRegAddressWeight(3, text("MW"), 5));
}

TEST_F(SortOrder, WeightsWrapAroundAt32Bits)
{
    // 60000 x 65535 - 2^32, 65535 + 2^31 - 1 - 2^32, and 6 x -2^31, a multiple of 2^32
    EXPECT_EQ(-362867296, getRegAddressWeight(10000, text("MW"), 0));
    EXPECT_EQ(-2147418114, getRegAddressWeight(0, text("IW"), INT_MAX));
    EXPECT_EQ(42, getRegAddressWeight(INT_MIN, text("MW"), 42));
}

TEST_F(SortOrder, RecordsSortByStationThenAreaThenAddress)
{
    QVector<_RCP_VAR_PRO> records{
        numbered("MW", 3000, 6, 2), numbered("QX", 9, 5, 1), numbered("QX", 8, 4, 1),
        numbered("IW", 255, 3, 1),  numbered("MW", 7, 2, 1), numbered("QX", 4095, 1, 0),
    };
    sortByRegAddressWeight<qint32>(records);
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5, 6}), numbersIn(records));
}

TEST_F(SortOrder, EqualWeightsKeepTheirOrder)
{
    // Marker word 65535 and input word 0 weigh the same.
    QVector<_RCP_VAR_PRO> records{
        numbered("MW", 65535, 1), numbered("IW", 0, 2), numbered("MW", 3, 3),
        numbered("MW", 65535, 4), numbered("MW", 3, 5), numbered("IW", 0, 6),
    };
    sortByRegAddressWeight<qint32>(records);
    EXPECT_EQ((std::vector<int>{3, 5, 1, 2, 4, 6}), numbersIn(records));
}

TEST_F(SortOrder, ManyEqualWeightsKeepTheirOrder)
{
    QVector<_RCP_VAR_PRO> records;
    std::vector<int> expected;
    for (int i = 0; i < 200; ++i) {
        records.append(numbered("IX", 5, i));
        expected.push_back(i);
    }
    sortByRegAddressWeight<quint32>(records);
    EXPECT_EQ(expected, numbersIn(records));
}

TEST_F(SortOrder, ASignedSortPutsNegativeWeightsFirst)
{
    QVector<_RCP_VAR_PRO> records{numbered("MW", 5, 1), numbered("MW", -1, 2),
                                  numbered("MW", 0, 3)};
    sortByRegAddressWeight<qint32>(records);
    EXPECT_EQ((std::vector<int>{2, 3, 1}), numbersIn(records));
}

TEST_F(SortOrder, AnUnsignedSortPutsNegativeWeightsLast)
{
    QVector<_RCP_VAR_PRO> records{numbered("MW", -1, 1), numbered("MW", 5, 2),
                                  numbered("MW", -2, 3), numbered("MW", 0, 4)};
    sortByRegAddressWeight<quint32>(records);
    EXPECT_EQ((std::vector<int>{4, 2, 3, 1}), numbersIn(records));
}

TEST_F(SortOrder, AWholeRecordMoves)
{
    QVector<_RCP_VAR_PRO> records{recipeVariable(7, 2, "IX", 30, 4, 11),
                                  recipeVariable(8, 1, "QX", 40, 5, 12)};
    records[0].spare = 21;
    records[1].spare = 22;
    sortByRegAddressWeight<qint32>(records);
    EXPECT_EQ((Texts{"1 QX 40 x5", "2 IX 30 x4"}), blocksOf(records));
    EXPECT_EQ(8, records.at(0).linkNo);
    EXPECT_EQ(12, records.at(0).bufOffset);
    EXPECT_EQ(22, records.at(0).spare);
    EXPECT_EQ(21, records.at(1).spare);
}

TEST_F(SortOrder, EmptyAndSingleListsStayAsTheyAre)
{
    QList<KEY_ADDRESS> none;
    sortByRegAddressWeight<qint32>(none);
    EXPECT_TRUE(none.isEmpty());

    QList<KEY_ADDRESS> one{key(1, "MW", 3000, 2)};
    sortByRegAddressWeight<qint32>(one);
    EXPECT_EQ(Texts{"1 MW 3000 x2"}, blocksOf(one));
}
