#include "loadedDriver.h"

#include <algorithm>

// Frames are those of the MODBUS Application Protocol V1.1b3 (6.3, 6.5, 6.6, 6.12) with the
// addresses of these tests; their checksums were worked out with pymodbus' computeCRC.

class LoadedExchange : public LoadedDriver
{
protected:
    typedef std::vector<std::string> Calls;

    void pollTwoMarkerWords()
    {
        QList<KEY_ADDRESS> keys;
        keys.append(key("MW", 3000, 2));
        ASSERT_EQ(1, driver.addrMerge(keys));
        ASSERT_EQ("01 03 0B B8 00 02 46 0A", nextRequest());
    }

    const QByteArray twoWords = bytes({0x01, 0x03, 0x04, 0x12, 0x34, 0x56, 0x78, 0x81, 0x07});
    const QByteArray wordEcho = bytes({0x01, 0x06, 0x0B, 0xB9, 0x04, 0xD2, 0xD8, 0x96});
};

TEST_F(LoadedExchange, NothingToDoGivesNoRequest)
{
    EXPECT_EQ("none", nextRequest());
    EXPECT_EQ(REPLY_NOTHING_PENDING, answer(twoWords));
}

TEST_F(LoadedExchange, PolledWordsReachTheHostAndAreReportedOnce)
{
    pollTwoMarkerWords();
    EXPECT_EQ(9, frame.recvLen);
    EXPECT_EQ(REPLY_ACCEPTED, answer(twoWords));
    EXPECT_EQ((Calls{"7 1 MW 3000", "7 1 MW 3001"}), calls());
    EXPECT_EQ((std::vector<int>{0x34, 0x12, 0x78, 0x56}), read("MW", 3000, 2, 4));

    calls().clear();
    nextRequest();
    answer(twoWords);
    EXPECT_EQ(Calls(), calls());
}

TEST_F(LoadedExchange, AWrittenWordIsShownAtOnceAndConfirmedByItsEcho)
{
    write("MW", 3001, {0xD2, 0x04});
    EXPECT_EQ((std::vector<int>{0xD2, 0x04}), read("MW", 3001, 1, 2));
    EXPECT_EQ("01 06 0B B9 04 D2 D8 96", nextRequest());
    EXPECT_EQ(REPLY_ACCEPTED, answer(wordEcho));
    EXPECT_EQ((std::vector<int>{0xD2, 0x04}), read("MW", 3001, 1, 2));
    EXPECT_EQ("none", nextRequest());
}

TEST_F(LoadedExchange, AWriteThatIsGivenUpFallsBackAndIsReported)
{
    write("QX", 5, {1});
    EXPECT_EQ("01 05 00 05 FF 00 9C 3B", nextRequest());
    calls().clear();
    EXPECT_EQ(REPLY_RETRY, answer(bytes({})));
    EXPECT_EQ("01 05 00 05 FF 00 9C 3B", nextRequest());
    EXPECT_EQ(REPLY_RETRY, answer(bytes({0x01})));
    EXPECT_EQ(REPLY_GIVEN_UP, answer(bytes({0x01, 0x85, 0x02, 0xC3, 0x51})));
    EXPECT_EQ("5,1,5,QX", errorText.toStdString());
    EXPECT_EQ((Calls{"7 1 QX 5"}), calls());
    EXPECT_EQ((std::vector<int>{0}), read("QX", 5, 1, 1));
    EXPECT_EQ("none", nextRequest());
}

TEST_F(LoadedExchange, GarbageOfAnyLengthIsRejectedAndTheNextReplyTaken)
{
    pollTwoMarkerWords();
    QByteArray oversize(70000, 'x');
    EXPECT_EQ(REPLY_RETRY, answer(oversize));
    EXPECT_EQ(REPLY_RETRY, answer(twoWords.left(8)));
    EXPECT_EQ(REPLY_ACCEPTED, answer(twoWords));
    EXPECT_EQ((std::vector<int>{0x34, 0x12}), read("MW", 3000, 1, 2));
}

TEST_F(LoadedExchange, AOneShotReadReportsItsEnd)
{
    KEY_ADDRESS wanted = key("MW", 3000, 2);
    EXPECT_EQ(1, driver.addConditionRead(wanted, 9));
    EXPECT_EQ("01 03 0B B8 00 02 46 0A", nextRequest());
    EXPECT_EQ(9, frame.var.varId);
    EXPECT_EQ(REPLY_ACCEPTED, answer(twoWords));
    EXPECT_EQ((Calls{"-1 -1 -1 0"}), calls());
    EXPECT_EQ("none", nextRequest());
}

TEST_F(LoadedExchange, ARecipeGoesDownAndComesBackUp)
{
    _RCP_VAR_PRO variable;
    variable.linkNo = 7;
    variable.station = 1;
    variable.regName = text("MW");
    variable.addr = 3100;
    variable.count = 2;
    variable.bufOffset = 1;
    QVector<_RCP_VAR_PRO> records;
    records.append(variable);
    ASSERT_EQ(1, driver.setRcpAddress(records));

    const unsigned char sent[] = {0x11, 0x10, 0x13, 0x12};
    std::copy(sent, sent + 4, recipe.begin() + 2);
    shared[RECIPE_DOWNLOAD_FLAG] = 1;
    EXPECT_EQ("01 10 0C 1C 00 02 04 10 11 12 13 BE 5E", nextRequest());
    EXPECT_EQ(REPLY_ACCEPTED, answer(bytes({0x01, 0x10, 0x0C, 0x1C, 0x00, 0x02, 0x83, 0x5E})));
    EXPECT_EQ(0, shared[RECIPE_DOWNLOAD_FLAG]);

    shared[RECIPE_UPLOAD_FLAG] = 1;
    EXPECT_EQ("01 03 0C 1C 00 02 06 9D", nextRequest());
    EXPECT_EQ(REPLY_ACCEPTED, answer(bytes({1, 3, 4, 0x11, 0x10, 0x13, 0x12, 0x73, 0xF7})));
    EXPECT_EQ(0, shared[RECIPE_UPLOAD_FLAG]);
    EXPECT_EQ((Calls{"0 -1 RWI 1", "0 -1 RWI 2"}), calls());
    const std::vector<unsigned char> head(recipe.begin(), recipe.begin() + 7);
    EXPECT_EQ((std::vector<unsigned char>{0, 0, 0x10, 0x11, 0x12, 0x13, 0}), head);
}

TEST_F(LoadedExchange, InitialisingAgainDropsPlanWritesAndCache)
{
    pollTwoMarkerWords();
    answer(twoWords);
    write("MW", 3001, {0xD2, 0x04});
    char properties[] = "7#0#0#3#32";
    driver.initProperty(shared.data(), 0, recipe.data(), nullptr, properties, &mutex);
    EXPECT_EQ("none", nextRequest());
    EXPECT_EQ((std::vector<int>{0, 0}), read("MW", 3000, 1, 2));
}
