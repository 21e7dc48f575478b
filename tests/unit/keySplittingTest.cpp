#include "keySplitting.h"

#include "driverFixture.h"
#include "listTexts.h"

#include <climits>

namespace {

enum { BYTES = -1, WORDS = 0 };

QList<KEY_ADDRESS> split(const KEY_ADDRESS& whole, int maxLen, int withData = 0)
{
    QList<KEY_ADDRESS> out;
    groupingKey(whole, maxLen, out, withData);
    return out;
}

/// Byte n of the data is n modulo 251, so that no two neighbouring pieces look alike.
KEY_ADDRESS filledKey(int count, int unitMode)
{
    KEY_ADDRESS made = key(1, "MW", 3000, count, unitMode);
    for (int i = 0; i < VALUE_BYTES; ++i)
        made.data[i] = static_cast<unsigned char>(i % 251);
    return made;
}

void expectData(const KEY_ADDRESS& piece, int fromByte, int length)
{
    for (int i = 0; i < length; ++i)
        ASSERT_EQ((fromByte + i) % 251, piece.data[i]) << "byte " << i;
}

} // namespace

class KeySplitting : public DriverTest
{
};

TEST_F(KeySplitting, AKeyBeyondTheLimitIsCut)
{
    struct
    {
        const char* key;
        int maxLen;
        const char* pieces;
    } const rows[] = {
        // A key within the limit passes whole.
        {"1 MW 3000 x4", 4, "1 MW 3000 x4"},
        {"1 MW 3000 x0", 4, "1 MW 3000 x0"},
        {"1 MW 3000 x-7", 4, "1 MW 3000 x-7"},
        {"1 MW 3000 x5", 4, "1 MW 3000 x4, 1 MW 3004 x1"},
        // The last piece takes the rest, or is full when nothing is left over.
        {"1 IX 20 x10", 4, "1 IX 20 x4, 1 IX 24 x4, 1 IX 28 x2"},
        {"1 IX 20 x8", 4, "1 IX 20 x4, 1 IX 24 x4"},
        {"1 IX 5 x3", 1, "1 IX 5 x1, 1 IX 6 x1, 1 IX 7 x1"},
        // A limit below one lets the key pass whole.
        {"1 IX 5 x3", 0, "1 IX 5 x3"},
        {"1 IX 5 x3", -1, "1 IX 5 x3"},
        {"1 IX 5 x3", INT_MIN, "1 IX 5 x3"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.pieces, blockLine(split(keysOf(row.key).at(0), row.maxLen))) << row.maxLen;
}

TEST_F(KeySplitting, PiecesAreAppended)
{
    QList<KEY_ADDRESS> out{key(9, "QX", 1, 1)};
    groupingKey(key(1, "IX", 5, 3), 2, out, 0);
    groupingKey(key(1, "IW", 5, 1), 2, out, 0);
    EXPECT_EQ((Texts{"9 QX 1 x1", "1 IX 5 x2", "1 IX 7 x1", "1 IW 5 x1"}), blocksOf(out));
}

TEST_F(KeySplitting, EveryPieceKeepsTheOtherFieldsOfTheKey)
{
    KEY_ADDRESS whole = key(6, "MX", 3000, 3, BYTES);
    whole.label = text("label");
    whole.typeText = text("BOOL");
    whole.param1 = 11;
    whole.param2 = 12;
    const QList<KEY_ADDRESS> pieces = split(whole, 2, 1);
    ASSERT_EQ(2, int(pieces.size()));
    for (int i = 0; i < 2; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ("label", pieces.at(i).label.toStdString());
        EXPECT_EQ("BOOL", pieces.at(i).typeText.toStdString());
        EXPECT_EQ(11, pieces.at(i).param1);
        EXPECT_EQ(12, pieces.at(i).param2);
        EXPECT_EQ(int(BYTES), pieces.at(i).unitMode);
    }
}

TEST_F(KeySplitting, ADataByteTravelsWithEachBit)
{
    for (int rest : {1, 2}) {
        SCOPED_TRACE(rest);
        const QList<KEY_ADDRESS> pieces = split(filledKey(8 + rest, BYTES), 4, 1);
        ASSERT_EQ(3, int(pieces.size()));
        expectData(pieces.at(0), 0, 4);
        expectData(pieces.at(1), 4, 4);
        expectData(pieces.at(2), 8, rest);
    }
}

TEST_F(KeySplitting, TwoDataBytesTravelWithEachWord)
{
    for (int unitMode : {0, 1, -2}) {
        SCOPED_TRACE(unitMode);
        const QList<KEY_ADDRESS> pieces = split(filledKey(10, unitMode), 4, 1);
        ASSERT_EQ(3, int(pieces.size()));
        expectData(pieces.at(0), 0, 8);
        expectData(pieces.at(1), 8, 8);
        expectData(pieces.at(2), 16, 4);
    }
}

TEST_F(KeySplitting, BehindItsOwnUnitsAPieceKeepsTheDataOfTheKey)
{
    const QList<KEY_ADDRESS> pieces = split(filledKey(10, BYTES), 4, 1);
    ASSERT_EQ(3, int(pieces.size()));
    EXPECT_EQ(7, pieces.at(1).data[3]);
    EXPECT_EQ(4, pieces.at(1).data[4]);
    EXPECT_EQ(9, pieces.at(2).data[1]);
    EXPECT_EQ(2, pieces.at(2).data[2]);
}

TEST_F(KeySplitting, WithoutTheCopyFlagPiecesKeepTheDataOfTheKey)
{
    for (int withData : {0, 2, -1}) {
        SCOPED_TRACE(withData);
        const QList<KEY_ADDRESS> pieces = split(filledKey(10, WORDS), 4, withData);
        ASSERT_EQ(3, int(pieces.size()));
        expectData(pieces.at(2), 0, VALUE_BYTES);
    }
}

TEST_F(KeySplitting, AWholeKeyKeepsItsData)
{
    const QList<KEY_ADDRESS> pieces = split(filledKey(4, WORDS), 4, 1);
    ASSERT_EQ(1, int(pieces.size()));
    expectData(pieces.at(0), 0, VALUE_BYTES);
}

TEST_F(KeySplitting, APieceAcrossTheEndOfTheDataTakesWhatIsThere)
{
    const QList<KEY_ADDRESS> words = split(filledKey(600, WORDS), 500, 1);
    ASSERT_EQ(2, int(words.size()));
    expectData(words.at(0), 0, 1000);
    expectData(words.at(1), 1000, 24);

    const QList<KEY_ADDRESS> bits = split(filledKey(1100, BYTES), 1000, 1);
    ASSERT_EQ(2, int(bits.size()));
    expectData(bits.at(1), 1000, 24);
}

TEST_F(KeySplitting, APieceLongerThanTheDataTakesAllOfIt)
{
    const QList<KEY_ADDRESS> pieces = split(filledKey(1500, WORDS), 1000, 1);
    EXPECT_EQ((Texts{"1 MW 3000 x1000", "1 MW 4000 x500"}), blocksOf(pieces));
    expectData(pieces.at(0), 0, VALUE_BYTES);
}

TEST_F(KeySplitting, PiecesBehindTheDataAreStillMade)
{
    EXPECT_EQ((Texts{"1 MW 3000 x512", "1 MW 3512 x512", "1 MW 4024 x1"}),
              blocksOf(split(filledKey(1025, WORDS), 512, 1)));
}

TEST_F(KeySplitting, TheLargestCountAndLimitDoNotOverflow)
{
    const int half = 1 << 30;
    EXPECT_EQ((Texts{"1 MW 3000 x1073741824", "1 MW 1073744824 x1073741823"}),
              blocksOf(split(filledKey(INT_MAX, WORDS), half, 1)));
    EXPECT_EQ((Texts{"1 MW 3000 x2147483646", "1 MW -2147480650 x1"}),
              blocksOf(split(filledKey(INT_MAX, BYTES), INT_MAX - 1, 1)));
    EXPECT_EQ(Texts{"1 MW 3000 x2147483647"},
              blocksOf(split(filledKey(INT_MAX, WORDS), INT_MAX, 1)));
}
