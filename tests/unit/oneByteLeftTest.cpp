#include "keySplitting.h"

#include "driverFixture.h"

class OneByteLeft : public DriverTest
{
};

TEST_F(OneByteLeft, TravelsWithTheLastPiece)
{
    enum { BIT_UNITS = -1, WITH_DATA = 1 };
    KEY_ADDRESS whole = key(1, "IX", 20, 5, BIT_UNITS);
    for (int i = 0; i < 5; ++i)
        whole.data[i] = static_cast<unsigned char>(0x50 + i);
    QList<KEY_ADDRESS> pieces;
    groupingKey(whole, 4, pieces, WITH_DATA);
    ASSERT_EQ(2, int(pieces.size()));
    EXPECT_EQ(0x50, pieces.at(0).data[0]);
    EXPECT_EQ(0x54, pieces.at(1).data[0]);
}
