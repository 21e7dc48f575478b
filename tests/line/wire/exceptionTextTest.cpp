#include "wire/exceptionText.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

// MODBUS Application Protocol V1.1b3, 7.

TEST(ExceptionText, EachProtocolCodeHasItsOwnWords)
{
    std::set<std::string> texts;
    for (int code : {1, 2, 3, 4, 5, 6, 8, 10, 11})
        texts.insert(exceptionText(code));
    EXPECT_EQ(9u, texts.size());
    EXPECT_EQ(0u, texts.count(exceptionText(255)));
}

TEST(ExceptionText, WordsMatchTheProtocolsMeaning)
{
    EXPECT_STREQ("illegal function", exceptionText(1));
    EXPECT_STREQ("illegal address", exceptionText(2));
    EXPECT_STREQ("illegal value", exceptionText(3));
    EXPECT_STREQ("device busy", exceptionText(6));
    EXPECT_STREQ("gateway target does not respond", exceptionText(11));
}

TEST(ExceptionText, OtherCodesAreUnknown)
{
    for (int code = 0; code < 256; ++code) {
        const bool isOfProtocol = (code >= 1 && code <= 6) || code == 8 || code == 10 || code == 11;
        if (isOfProtocol) continue;
        EXPECT_STREQ("unknown exception", exceptionText(code)) << code;
    }
    EXPECT_STREQ("unknown exception", exceptionText(-1));
}

TEST(ExceptionText, OnlyAcknowledgeAndBusyAreAskedAgain)
{
    EXPECT_EQ(5, STILL_WORKING);
    EXPECT_EQ(6, DEVICE_BUSY);
}
