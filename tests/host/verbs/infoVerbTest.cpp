#include "verbs/infoVerb.h"

#include "verbOutput.h"

#include <QJsonArray>

#include <gtest/gtest.h>

// Ranges as in the table of the driver's header.

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

class InfoVerb : public testing::Test
{
protected:
    const DriverLibrary m_driver{QString::fromLatin1(KAKB_DRIVER_FILE)};
};

} // namespace

TEST_F(InfoVerb, ShowsIdentityLinkAndEveryArea)
{
    const std::string info = printed([this](std::FILE* out) { printInfo(out, m_driver, false); });
    EXPECT_EQ("protocol       quorvane_ka_kb_plc, type 0\n"
              "interface      version 2.0.0.0\n"
              "property page  0_0\n"
              "serial line    38400 baud, 8 data bits, parity NONE, stop bits 1\n"
              "network        192.168.1.100, port 8000\n"
              "area  kind   format  lowest  highest  width    access\n"
              "MW    words  DDDD    0       8190     16 bits  read and write\n"
              "IW    words  DDDD    0       510      16 bits  read\n"
              "QW    words  DDDD    0       510      16 bits  read and write\n"
              "MX    bits   DDDDO   0.0     7816.7   1 bit    read and write\n"
              "IX    bits   DDDDO   0.0     511.7    1 bit    read\n"
              "QX    bits   DDDDO   0.0     511.7    1 bit    read and write\n",
              info);
}

TEST_F(InfoVerb, JsonHasTheSameContent)
{
    const QJsonObject info =
        objectOf(printed([this](std::FILE* out) { printInfo(out, m_driver, true); }));
    EXPECT_EQ(text("quorvane_ka_kb_plc"), info[text("protocol")].toString());
    EXPECT_EQ(text("2.0.0.0"), info[text("interfaceVersion")].toString());
    EXPECT_EQ(38400, info[text("baud")].toInt());
    EXPECT_EQ(8, info[text("dataBits")].toInt());
    EXPECT_EQ(text("NONE"), info[text("parity")].toString());
    EXPECT_EQ(1, info[text("stopBits")].toInt());
    EXPECT_EQ(text("192.168.1.100"), info[text("networkAddress")].toString());
    EXPECT_EQ(8000, info[text("port")].toInt());
    const QJsonArray areas = info[text("areas")].toArray();
    ASSERT_EQ(6, areas.size());
    const QJsonObject inputs = areas[4].toObject();
    EXPECT_EQ(text("IX"), inputs[text("name")].toString());
    EXPECT_EQ(text("bits"), inputs[text("kind")].toString());
    EXPECT_EQ(text("511.7"), inputs[text("highest")].toString());
    EXPECT_EQ(text("read"), inputs[text("access")].toString());
}
