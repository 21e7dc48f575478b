// The built library as a host loads it: behind each of the nineteen exported names stands the
// function of that name. What the functions do is shown by the unit and the model tests.

#include "benchHost.h"
#include "builtDriver.h"
#include "hexText.h"

#include <gtest/gtest.h>

#include <QStringList>

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

/// The next request as hexadecimal text, or "none".
std::string nextRequest(const BenchHost& host)
{
    FRAME_PRO frame;
    return host.nextFrame(frame) ? hexOf(requestOf(frame)) : "none";
}

} // namespace

TEST(Exports, TellWhatTheDriverIs)
{
    int type = -1;
    QString version;
    QString parameter;
    QString page;
    driver().getProtocolType(&type);
    driver().getVersion(&version);
    driver().getDriverParameter(&parameter);
    const QString set = text("1_1");
    driver().setDriverPropertyPage(&set);
    driver().getDriverPropertyPage(&page);
    EXPECT_EQ(0, type);
    EXPECT_EQ("2.0.0.0", version.toStdString());
    EXPECT_EQ("0,38400,8,NONE,1,0,51,192.168.1.100,8000,quorvane_ka_kb_plc,MW,IW,QW,MX,IX,QX",
              parameter.toStdString());
    EXPECT_EQ("0_0", page.toStdString());
}

TEST(Exports, ServeAnEditor)
{
    int address = 0;
    EXPECT_EQ(ADDRESS_READ_ONLY, driver().checkAddr(text("IW"), text("0"), address, 1, 1, 1));
    EXPECT_EQ(ADDRESS_VALID, driver().checkAddrValidity(text("MW"), text("8190"), address, 1, 1));
    EXPECT_EQ(7095, address);
    QStringList texts;
    EXPECT_EQ(0, driver().getRegDiscription(text("IX"), texts));
    EXPECT_EQ(1, driver().getRegListByType(0, texts));
    EXPECT_EQ("DDDDO,0.0,511.7,0,0,MX,IX,QX", texts.join(text(",")).toStdString());
    QVector<QString> series;
    QVector<int> addresses;
    EXPECT_EQ(SERIES_COMPLETE, driver().multiCopy(text("MW"), 3000, 2, 1, series, addresses));
    EXPECT_EQ((QVector<int>{3000, 3001}), addresses);
}

// Frames are those of the MODBUS Application Protocol V1.1b3 (6.3, 6.6, 6.12) with the addresses of
// this test; their checksums were worked out with pymodbus' computeCRC.
TEST(Exports, ServeAHost)
{
    BenchHost host(driver());
    ASSERT_EQ(1, host.poll({{1, "MW", 3000, 2}}));
    EXPECT_EQ("01 03 0B B8 00 02 46 0A", nextRequest(host));
    EXPECT_EQ(REPLY_ACCEPTED, host.takeReply(QByteArray::fromHex("010304123456788107")));
    EXPECT_EQ((std::vector<Told>{{7, 1, "MW", 3000}, {7, 1, "MW", 3001}}), host.told);
    EXPECT_EQ((std::vector<int>{0x1234, 0x5678}), host.read({1, "MW", 3000, 2}));

    host.write({1, "MW", 3001, 1}, {0x04D2});
    EXPECT_EQ("01 06 0B B9 04 D2 D8 96", nextRequest(host));
    EXPECT_EQ(REPLY_ACCEPTED, host.takeReply(QByteArray::fromHex("01060BB904D2D896")));
    host.readOnce({1, "MW", 3000, 2}, 9);
    FRAME_PRO frame;
    ASSERT_TRUE(host.nextFrame(frame));
    EXPECT_EQ(9, frame.var.varId);
    EXPECT_EQ(REPLY_ACCEPTED, host.takeReply(QByteArray::fromHex("010304123456788107")));

    ASSERT_EQ(1, host.setRecipe({{1, "MW", 3100, 2}}));
    host.setRecipeWord(0, 0x1110);
    host.setRecipeWord(1, 0x1312);
    host.raise(RECIPE_DOWNLOAD_FLAG);
    EXPECT_EQ("01 10 0C 1C 00 02 04 11 10 13 12 2E 32", nextRequest(host));
}
