#include "cacheHelpers.h"
#include "exchangeTest.h"

#include <ostream>
#include <string>
#include <vector>

// The order of the steps in which an exchange ends, seen by a host that looks at the driver's state
// from the callback.

namespace {

struct StateWhenTold
{
    std::string name;
    int commFailed;
    int failCount;
    int frames;
    int writes;
    std::string errorText;

    bool operator==(const StateWhenTold& other) const
    {
        return name == other.name && commFailed == other.commFailed &&
               failCount == other.failCount && frames == other.frames && writes == other.writes &&
               errorText == other.errorText;
    }
};

std::ostream& operator<<(std::ostream& out, const StateWhenTold& state)
{
    return out << "(" << state.name << ": commFailed " << state.commFailed << ", failCount "
               << state.failCount << ", frames " << state.frames << ", writes " << state.writes
               << ", \"" << state.errorText << "\")";
}

typedef std::vector<StateWhenTold> StatesWhenTold;

StatesWhenTold states;
const QString* hostsErrorText;

void noteState(int, int, QString& name, int)
{
    states.push_back({name.toStdString(), driver.commFailed, driver.failCount,
                      int(driver.frameQueue.size()), int(driver.writeList.size()),
                      hostsErrorText->toStdString()});
}

class ExchangeState : public ExchangeTest
{
protected:
    enum { RETRY_LIMIT = 3 };

    ExchangeState()
    {
        initialise(RETRY_LIMIT);
        states.clear();
        hostsErrorText = &errorText;
        intf_setAddrValueChangeCallBack(noteState);
    }

    static void askOnce(const char* area, int addr)
    {
        KEY_ADDRESS wanted = key(1, area, addr, 1);
        intf_addConditionRead(wanted, 9);
    }

    /// Monitors and polls one word.
    static void pollWord(const char* area, int addr)
    {
        QList<KEY_ADDRESS> wanted;
        wanted.append(key(1, area, addr, 1));
        intf_addrMerge(wanted);
    }
};

} // namespace

TEST_F(ExchangeState, AReadValueIsToldAfterTheFailureIsForgottenAndBeforeTheFrameIsDropped)
{
    pollWord("IW", 5);
    driver.commFailed = 1; // an earlier request was given up
    request();
    EXPECT_EQ(REPLY_RETRY, silence());
    EXPECT_EQ(REPLY_RETRY, silence());
    EXPECT_EQ(REPLY_ACCEPTED, answerWord(7));
    EXPECT_EQ((StatesWhenTold{{"IW", 0, 2, 1, 0, ""}}), states);
    EXPECT_EQ(0, driver.failCount);
}

TEST_F(ExchangeState, AGoodOneShotReadEndsWithoutItsFrameAndBeforeBadRepliesAreForgotten)
{
    askOnce("IW", 5);
    request();
    EXPECT_EQ(REPLY_RETRY, silence());
    EXPECT_EQ(REPLY_ACCEPTED, answerWord(7));
    EXPECT_EQ((StatesWhenTold{{"-1", 0, 1, 0, 0, ""}}), states);
    EXPECT_EQ(0, driver.failCount);
}

TEST_F(ExchangeState, AOneShotReadIsGivenUpAfterFramesAndBadRepliesAreForgotten)
{
    askOnce("IW", 5);
    request();
    giveUp();
    EXPECT_EQ((StatesWhenTold{{"-1", 1, 0, 0, 0, "0,1,5,IW"}}), states);
}

TEST_F(ExchangeState, AGivenUpWriteIsToldAsAFailureBeforeItsFrameAndBadRepliesAreForgotten)
{
    driver.writeList.append(variable(1, "QX", 5, 1, {1}));
    request();
    giveUp();
    EXPECT_EQ((StatesWhenTold{{"QX", 1, int(RETRY_LIMIT), 1, 1, ""}}), states);
    EXPECT_EQ("0,1,5,QX", errorText.toStdString());
    EXPECT_EQ(0, driver.failCount);
    EXPECT_EQ(0, int(driver.frameQueue.size()));
}

TEST_F(ExchangeState, AnUploadedWordIsToldBeforeItsFrameIsDropped)
{
    QVector<_RCP_VAR_PRO> records = {recipeVariable(CONTEXT, 1, "MW", 3000, 1, 0)};
    intf_setRcpAddress(records);
    raise(RECIPE_UPLOAD_FLAG);
    driver.commFailed = 1;
    request();
    EXPECT_EQ(REPLY_RETRY, silence());
    EXPECT_EQ(REPLY_ACCEPTED, answerWord(7));
    EXPECT_EQ((StatesWhenTold{{"RWI", 0, 1, 1, 0, ""}}), states);
}

TEST_F(ExchangeState, AWriteIsQueuedWholeBeforeItIsTold)
{
    for (const char* area : {"MW", "QX"}) {
        SCOPED_TRACE(area);
        initialise(RETRY_LIMIT);
        states.clear();
        for (int addr = 3000; addr < 3003; ++addr)
            putUnit(1, area, addr, 0, 1);
        unsigned char values[] = {1, 1, 1, 1, 1, 1};
        intf_setData(1, text(area), 3000, 3, values, 9);
        const StateWhenTold allQueued = {area, 0, 0, 0, 3, ""};
        EXPECT_EQ((StatesWhenTold{allQueued, allQueued, allQueued}), states);
    }
}
