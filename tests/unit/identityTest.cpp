#include "driverFixture.h"

class Identity : public DriverTest
{
};

namespace {

const char* const PARAMETER = "0,38400,8,NONE,1,0,51,192.168.1.100,8000,quorvane_ka_kb_plc,"
                              "MW,IW,QW,MX,IX,QX";

void firstCallBack(int, int, QString&, int) {}
void secondCallBack(int, int, QString&, int) {}

std::string parameter()
{
    QString out = text("old");
    intf_getDriverParameter(&out);
    return out.toStdString();
}

} // namespace

TEST_F(Identity, ProtocolTypeIsZero)
{
    int type = 99;
    intf_getProtocolType(&type);
    EXPECT_EQ(0, type);
}

TEST_F(Identity, VersionReplacesTheText)
{
    QString version = text("old");
    intf_getVersion(&version);
    EXPECT_EQ("2.0.0.0", version.toStdString());
}

TEST_F(Identity, DriverParameterReflectsNeitherInitialisationNorThePropertyPage)
{
    EXPECT_EQ(PARAMETER, parameter());
    initialise(9, 77, 1);
    const QString page = text("%1,%2");
    intf_SetDriverPropertyPage(&page);
    EXPECT_EQ(PARAMETER, parameter());
}

TEST_F(Identity, PropertyPageIsKeptButNotReadBack)
{
    for (const char* set : {"1_2", ""}) {
        const QString given = text(set);
        intf_SetDriverPropertyPage(&given);
        EXPECT_EQ(set, driver.propertyPage.toStdString());
        QString page = text("old");
        intf_getDriverPropertyPage(&page);
        EXPECT_EQ("0_0", page.toStdString());
    }
}

TEST_F(Identity, CallBackIsKeptReplacedAndTakenAway)
{
    const auto isKept = [](ValueChangeCallBack callBack) {
        intf_setAddrValueChangeCallBack(callBack);
        return driver.valueChangeCallBack == callBack;
    };
    EXPECT_TRUE(isKept(firstCallBack));
    EXPECT_TRUE(isKept(secondCallBack));
    EXPECT_TRUE(isKept(nullptr));
}

TEST_F(Identity, NullPointersAreLeftAlone)
{
    const QString page = text("1_2");
    intf_SetDriverPropertyPage(&page);
    intf_getProtocolType(nullptr);
    intf_getVersion(nullptr);
    intf_getDriverParameter(nullptr);
    intf_getDriverPropertyPage(nullptr);
    intf_SetDriverPropertyPage(nullptr);
    EXPECT_EQ("1_2", driver.propertyPage.toStdString());
}
