#include "loadedDriver.h"

class LoadedIdentity : public LoadedDriver
{
};

TEST_F(LoadedIdentity, TypeIsZero)
{
    int type = -1;
    driver.getProtocolType(&type);
    EXPECT_EQ(0, type);
}

TEST_F(LoadedIdentity, VersionAndPropertyPageAreTheDriversOwn)
{
    QString version;
    QString page;
    driver.getVersion(&version);
    driver.getDriverPropertyPage(&page);
    EXPECT_EQ("2.0.0.0", version.toStdString());
    EXPECT_EQ("0_0", page.toStdString());
}

TEST_F(LoadedIdentity, ParameterStringHasItsFourteenParts)
{
    QString parameter;
    driver.getDriverParameter(&parameter);
    EXPECT_EQ("0,38400,8,NONE,1,0,51,192.168.1.100,8000,quorvane_ka_kb_plc,MW,IW,QW,MX,IX,QX",
              parameter.toStdString());
}

TEST_F(LoadedIdentity, SettingThePropertyPageChangesNothingTheHostReads)
{
    const QString set = text("1_1");
    driver.setDriverPropertyPage(&set);
    QString page;
    driver.getDriverPropertyPage(&page);
    EXPECT_EQ("0_0", page.toStdString());
}

TEST_F(LoadedIdentity, AreasAreListedAndDescribed)
{
    QStringList bits;
    QStringList words;
    EXPECT_EQ(1, driver.getRegListByType(0, bits));
    EXPECT_EQ(1, driver.getRegListByType(1, words));
    EXPECT_EQ("MX,IX,QX", bits.join(text(",")).toStdString());
    EXPECT_EQ("MW,IW,QW", words.join(text(",")).toStdString());

    QStringList description;
    EXPECT_EQ(0, driver.getRegDiscription(text("IX"), description));
    EXPECT_EQ("DDDDO,0.0,511.7,0,0", description.join(text(",")).toStdString());
}

TEST_F(LoadedIdentity, AddressesAreCheckedAndConverted)
{
    int address = 0;
    EXPECT_EQ(ADDRESS_VALID, driver.checkAddr(text("MW"), text("8190"), address, 1, 1, 1));
    EXPECT_EQ(7095, address);
    EXPECT_EQ(ADDRESS_READ_ONLY, driver.checkAddr(text("IW"), text("0"), address, 1, 1, 1));
    EXPECT_EQ(ADDRESS_OUT_OF_RANGE,
              driver.checkAddrValidity(text("IX"), text("511.7"), address, 2, 0));
}

TEST_F(LoadedIdentity, SeriesAreGenerated)
{
    QVector<QString> texts;
    QVector<int> addresses;
    EXPECT_EQ(SERIES_COMPLETE, driver.multiCopy(text("MW"), 3000, 2, 1, texts, addresses));
    ASSERT_EQ(2, int(texts.size()));
    EXPECT_EQ("2", texts.at(1).toStdString());
    EXPECT_EQ(3001, addresses.at(1));
}
