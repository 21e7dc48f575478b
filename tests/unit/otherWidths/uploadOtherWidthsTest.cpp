#include "cacheHelpers.h"
#include "replyDecoding.h"

#include <algorithm>

class UploadOtherWidths : public DriverTest
{
};

TEST_F(UploadOtherWidths, AnUploadFillsTheBufferWhateverTheUnitsOfItsArea)
{
    initialise();
    driver.rcpVarsStaged.append(recipeVariable(CONTEXT, 1, "V", 0, 2, 10));
    driver.blockStartIndex.append(0);
    driver.frameKind = FRAME_RECIPE_UPLOAD;
    for (const char* unitBits : {"1", "8", "16", "32"}) {
        std::fill(recipe.begin(), recipe.end(), static_cast<unsigned char>(0));
        decodeReplyOfArea(OtherRow("16", unitBits), bytes({1, 3, 4, 1, 2, 3, 4, 0, 0}), 1, 3,
                          variable(1, "V", 0, 1));
        const std::vector<unsigned char> filled(recipe.begin() + 20, recipe.begin() + 24);
        EXPECT_EQ((std::vector<unsigned char>{2, 1, 4, 3}), filled) << unitBits;
    }
}
