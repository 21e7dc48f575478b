#include "recipes.h"

#include "driverFixture.h"
#include "listTexts.h"

#include <algorithm>
#include <climits>

namespace {

enum { WITHOUT_DATA = 0, WITH_DATA = 1, STALE = 0xEE };

_RCP_VAR_PRO block(const char* area, int addr, int count, int bufOffset)
{
    return recipeVariable(7, 3, area, addr, count, bufOffset);
}

VARIABLE converted(const _RCP_VAR_PRO& rec, int withData)
{
    VARIABLE var = variable(99, "old", 99, 99);
    var.varId = 55;
    std::fill(var.value, var.value + VALUE_BYTES, static_cast<unsigned char>(STALE));
    rcpAddrToVar(rec, var, withData);
    return var;
}

int bytesOtherThanZero(const VARIABLE& var, int from)
{
    return int(VALUE_BYTES - from - std::count(var.value + from, var.value + VALUE_BYTES, 0));
}

} // namespace

class RecipeVariables : public DriverTest
{
protected:
    RecipeVariables()
    {
        initialise();
        // No byte is 0, and neighbouring words differ.
        for (size_t i = 0; i < recipe.size(); ++i)
            recipe[i] = static_cast<unsigned char>(1 + i % 251);
    }

    void expectFromRecipe(const VARIABLE& var, int fromByte, int length)
    {
        for (int i = 0; i < length; ++i)
            ASSERT_EQ(recipe[size_t(fromByte + i)], var.value[i]) << "byte " << i;
    }
};

TEST_F(RecipeVariables, ABlockGivesStationAreaAddressAndCount)
{
    EXPECT_EQ("3 MW 3005 x4", blockText(converted(block("MW", 3005, 4, 0), WITHOUT_DATA)));
    EXPECT_EQ("3 QX 40 x16", blockText(converted(block("QX", 40, 16, 0), WITH_DATA)));
}

TEST_F(RecipeVariables, TheIdIsLeftAsItWas)
{
    EXPECT_EQ(55, converted(block("MW", 3005, 4, 0), WITH_DATA).varId);
}

TEST_F(RecipeVariables, WithoutDataEveryValueByteIsZero)
{
    EXPECT_EQ(0, bytesOtherThanZero(converted(block("MW", 3005, 4, 0), WITHOUT_DATA), 0));
}

TEST_F(RecipeVariables, WordsComeFromTheirPlaceInTheRecipeBuffer)
{
    const VARIABLE var = converted(block("QW", 5, 2, 3), WITH_DATA);
    expectFromRecipe(var, 6, 4);
    EXPECT_EQ(0, bytesOtherThanZero(var, 4));
}

TEST_F(RecipeVariables, BitsTakeTwoBytesEachFromTheRecipeBuffer)
{
    const VARIABLE var = converted(block("QX", 0, 3, 2), WITH_DATA);
    EXPECT_EQ(3, var.count);
    expectFromRecipe(var, 4, 6);
    EXPECT_EQ(0, bytesOtherThanZero(var, 6));
}

TEST_F(RecipeVariables, EveryNonzeroFlagTakesData)
{
    for (int flag : {1, 2, -1}) {
        SCOPED_TRACE(flag);
        expectFromRecipe(converted(block("QW", 5, 1, 3), flag), 6, 2);
    }
}

TEST_F(RecipeVariables, ValuesFillTheVariableAndNoMore)
{
    // Twice the room of a variable, the second half as a guard.
    std::vector<VARIABLE> room(2);
    std::fill(room[1].value, room[1].value + VALUE_BYTES, static_cast<unsigned char>(STALE));
    room[1].regName = text("guard");
    room[1].varId = 55;
    rcpAddrToVar(block("QW", 5, 511, 1), room[0], WITH_DATA);
    expectFromRecipe(room[0], 2, VALUE_BYTES - 2);
    EXPECT_EQ(0, bytesOtherThanZero(room[0], VALUE_BYTES - 2));
    for (int count : {512, 513, 600, INT_MAX}) {
        SCOPED_TRACE(count);
        rcpAddrToVar(block("QW", 5, count, 1), room[0], WITH_DATA);
        expectFromRecipe(room[0], 2, VALUE_BYTES);
        EXPECT_EQ(count, room[0].count);
        EXPECT_EQ("guard", room[1].regName.toStdString());
        EXPECT_EQ(55, room[1].varId);
        EXPECT_EQ(int(VALUE_BYTES), std::count(room[1].value, room[1].value + VALUE_BYTES, STALE));
    }
}

TEST_F(RecipeVariables, NoValueIsTakenFromOutsideTheRecipeBuffer)
{
    EXPECT_EQ(4, bytesOtherThanZero(converted(block("QW", 5, 2, 0), WITH_DATA), 0));
    EXPECT_EQ(0, bytesOtherThanZero(converted(block("QW", 5, 2, -1), WITH_DATA), 0));
    EXPECT_EQ(0, bytesOtherThanZero(converted(block("QW", 5, 2, INT_MIN), WITH_DATA), 0));
    EXPECT_EQ(0, bytesOtherThanZero(converted(block("QW", 5, -1, 0), WITH_DATA), 0));
    EXPECT_EQ(0, bytesOtherThanZero(converted(block("QW", 5, 0, 0), WITH_DATA), 0));
    driver.rcpBuffer = 0;
    EXPECT_EQ(0, bytesOtherThanZero(converted(block("QW", 5, 2, 0), WITH_DATA), 0));
}

TEST_F(RecipeVariables, BlocksKeepTheirCountAndOnlyKnownAreasAreTransferable)
{
    for (const char* area : {"MW", "IW", "QW", "MX", "IX", "QX"}) {
        EXPECT_EQ(5, converted(block(area, 0, 5, 0), WITHOUT_DATA).count) << area;
        EXPECT_TRUE(isTransferable(block(area, 0, 1, 0))) << area;
    }
    for (const char* area : {"ZZ", "mw", "", "MX_bit"}) {
        EXPECT_EQ(5, converted(block(area, 0, 5, 0), WITHOUT_DATA).count) << area;
        EXPECT_FALSE(isTransferable(block(area, 0, 1, 0))) << area;
    }
}

TEST_F(RecipeVariables, BlocksWithoutAPlaceInTheRecipeBufferAreNotTransferable)
{
    EXPECT_TRUE(isTransferable(block("MW", 3000, 0, 0)));
    EXPECT_FALSE(isTransferable(block("MW", 3000, -1, 0)));
    EXPECT_TRUE(isTransferable(block("MW", 3000, 1, 0)));
    EXPECT_FALSE(isTransferable(block("MW", 3000, 1, -1)));
    driver.rcpBuffer = 0;
    EXPECT_FALSE(isTransferable(block("MW", 3000, 1, 0)));
}
