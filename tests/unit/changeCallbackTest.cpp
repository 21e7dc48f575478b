#include "changeTest.h"

namespace {

class ChangeCallback : public ChangeTest
{
};

std::vector<std::string> namesSeen;

void spoilName(int, int, QString& name, int)
{
    namesSeen.push_back(name.toStdString());
    name = text("spoilt");
}

void growCache(int, int, QString& name, int addr)
{
    namesSeen.push_back(name.toStdString());
    unsigned char value[2];
    for (int i = 0; i < 64; ++i)
        intf_getData(1, text("MW"), 64 * addr + i, 1, value);
}

} // namespace

TEST_F(ChangeCallback, TheContextIsHandedBackUnchanged)
{
    for (int context : {0, -1, int(LOWEST), int(HIGHEST)}) {
        driver.callbackContext = context;
        putV(1, 1);
        EXPECT_EQ(Notifications({{context, STATION, "V", 1}}), wordChange(0, 1));
    }
}

TEST_F(ChangeCallback, TheRecordOfTheGivenIndexIsReported)
{
    putV(1, 1);
    putUnit(9, "IW", 30, 0, 1);
    _wordDataChange(0, 0, 1, 0);
    _bitDataChange(1);
    EXPECT_EQ(Notifications({{CONTEXT, 9, "IW", 30}, {CONTEXT, 9, "IW", 30}}), takeNotifications());
}

TEST_F(ChangeCallback, EachCallGetsAFreshTextWhateverTheCalleeDidToTheLast)
{
    putV(10, 0x07, 0x03);
    namesSeen.clear();
    intf_setAddrValueChangeCallBack(spoilName);
    wordChange(0, 3);
    EXPECT_EQ(std::vector<std::string>({"V_bit", "V_bit", "V", "V_D", "V_D"}), namesSeen);
    EXPECT_EQ(text("V"), driver.dataAreas.at(0).regName);
}

TEST_F(ChangeCallback, TheTextHandedInIsNotTheCalleesToChange)
{
    namesSeen.clear();
    intf_setAddrValueChangeCallBack(spoilName);
    const QString name = text("RWI");
    notifyHost(0, -1, name, 3);
    notifyHost(0, -1, name, 4);
    EXPECT_EQ(std::vector<std::string>({"RWI", "RWI"}), namesSeen);
}

TEST_F(ChangeCallback, TheCalleeMayMakeTheCacheGrow)
{
    putV(10, 0x7F, 0x03);
    namesSeen.clear();
    intf_setAddrValueChangeCallBack(growCache);
    byteChange(0, 3);
    EXPECT_EQ(std::vector<std::string>(
                  {"V_bit", "V_bit", "V_B", "V_W", "V_W", "V_D", "V_D", "V_D", "V_D"}),
              namesSeen);
}

TEST_F(ChangeCallback, WithoutACallbackNobodyIsTold)
{
    putV(10, 0x7F, 0x03);
    intf_setAddrValueChangeCallBack(0);
    EXPECT_EQ(Notifications(), bitChange());
    EXPECT_EQ(Notifications(), byteChange(0, 3));
    EXPECT_EQ(Notifications(), wordChange(0, 3));
    EXPECT_EQ(Notifications(), dwordChange(0, 3));
    notifyHost(0, 0, text("V"), 0);
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(ChangeCallback, NotifyingPassesAllFourArgumentsOn)
{
    notifyHost(-1, -2, text("name"), -3);
    EXPECT_EQ(Notifications({{-1, -2, "name", -3}}), takeNotifications());
}
