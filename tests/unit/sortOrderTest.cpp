#include "sortOrder.h"

#include "driverFixture.h"
#include "listTexts.h"

#include <climits>

namespace {

_RCP_VAR_PRO numbered(const char* area, int addr, int number, int station = 0)
{
    return recipeVariable(0, station, area, addr, 1, number);
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

TEST_F(SortOrder, PositionsAreThoseOfTheDriversOwnNames)
{
    driver.regNames.clear();
    driver.regNames.append(text("IX"));
    driver.regNames.append(text("MW"));
    // (3 x 2 + 1) x 65535 + 5
    EXPECT_EQ(458750, getRegAddressWeight(3, text("MW"), 5));
}

TEST_F(SortOrder, AStationWeighsSixAreasInWrappingNumbersOf32Bits)
{
    struct
    {
        int station;
        const char* area;
        int addr;
        int weight;
    } const rows[] = {
        {1, "MW", 3000, 396210},  // (1 x 6 + 0) x 65535 + 3000
        {2, "QX", 4095, 1118190}, // (2 x 6 + 5) x 65535 + 4095
        // An absent name weighs one area less than the station's first.
        {1, "ZZ", 7, 327682}, // (1 x 6 - 1) x 65535 + 7
        {0, "mw", 0, -65535},
        {10000, "MW", 0, -362867296},    // 60000 x 65535 - 2^32
        {0, "IW", INT_MAX, -2147418114}, // 65535 + 2^31 - 1 - 2^32
        {INT_MIN, "MW", 42, 42},         // 6 x -2^31 is a multiple of 2^32
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.weight, getRegAddressWeight(row.station, text(row.area), row.addr))
            << row.station << " " << row.area << " " << row.addr;
}

TEST_F(SortOrder, RecordsSortByStationThenAreaThenAddress)
{
    QVector<_RCP_VAR_PRO> records{
        numbered("MW", 3000, 6, 2), numbered("QX", 9, 5, 1), numbered("QX", 8, 4, 1),
        numbered("IW", 255, 3, 1),  numbered("MW", 7, 2, 1), numbered("QX", 4095, 1, 0),
    };
    sortByRegAddressWeight<qint32>(records);
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5, 6}), offsetsOf(records));
}

TEST_F(SortOrder, EqualWeightsKeepTheirOrder)
{
    // Marker word 65535 and input word 0 weigh the same.
    QVector<_RCP_VAR_PRO> records{
        numbered("MW", 65535, 1), numbered("IW", 0, 2), numbered("MW", 3, 3),
        numbered("MW", 65535, 4), numbered("MW", 3, 5), numbered("IW", 0, 6),
    };
    sortByRegAddressWeight<qint32>(records);
    EXPECT_EQ((std::vector<int>{3, 5, 1, 2, 4, 6}), offsetsOf(records));
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
    EXPECT_EQ(expected, offsetsOf(records));
}

TEST_F(SortOrder, ASignedSortPutsNegativeWeightsFirstAndAnUnsignedOneLast)
{
    QVector<_RCP_VAR_PRO> records{numbered("MW", -1, 1), numbered("MW", 5, 2),
                                  numbered("MW", -2, 3), numbered("MW", 0, 4)};
    sortByRegAddressWeight<qint32>(records);
    EXPECT_EQ((std::vector<int>{3, 1, 4, 2}), offsetsOf(records));
    sortByRegAddressWeight<quint32>(records);
    EXPECT_EQ((std::vector<int>{4, 2, 3, 1}), offsetsOf(records));
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
