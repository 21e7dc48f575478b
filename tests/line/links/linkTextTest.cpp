#include "links/linkText.h"

#include <gtest/gtest.h>

namespace {

/// The driver's parameter string as its manual lays it out, with settings told from any default.
const char* const PARAMETER = "0,19200,7,EVEN,2,0,51,10.0.0.7,4001,a,MW,IW,QW,MX,IX,QX";

LinkAddress parsed(const char* text)
{
    return linkAddress(QString::fromLatin1(text), linkDefaults(QString::fromLatin1(PARAMETER)));
}

std::string complaint(const char* text)
{
    try {
        parsed(text);
    } catch (const LinkTextError& error) {
        return error.what();
    }
    return "none";
}

std::string inWords(const LineSettings& line)
{
    const char parity[] = {'N', 'E', 'O'};
    return std::to_string(line.baud) + " " + std::to_string(line.dataBits) + parity[line.parity] +
           std::to_string(line.stopBits);
}

} // namespace

TEST(LinkText, DefaultsComeFromTheDriversParameters)
{
    const LinkDefaults defaults = linkDefaults(QString::fromLatin1(PARAMETER));
    EXPECT_EQ("19200 7E2", inWords(defaults.line));
    EXPECT_EQ("10.0.0.7", defaults.host.toStdString());
    EXPECT_EQ(4001, defaults.port);
}

TEST(LinkText, TheSimulatedPlcIsReachedWithTheDefaultLine)
{
    const LinkAddress address = parsed("sim");
    EXPECT_EQ(LinkAddress::SIMULATED, address.kind);
    EXPECT_EQ("19200 7E2", inWords(address.line));
}

TEST(LinkText, ASerialLinkNamesItsDevice)
{
    const LinkAddress address = parsed("serial:/dev/ttyUSB0,9600");
    EXPECT_EQ(LinkAddress::SERIAL, address.kind);
    EXPECT_EQ("/dev/ttyUSB0", address.device.toStdString());
}

TEST(LinkText, PartsOfASerialLinkThatAreLeftOutTakeTheDefaults)
{
    const struct
    {
        const char* text;
        const char* line;
    } rows[] = {{"serial:/dev/ttyUSB0", "19200 7E2"},
                {"serial:/dev/ttyUSB0,38400", "38400 7E2"},
                {"serial:/dev/ttyUSB0,38400,8", "38400 8E2"},
                {"serial:/dev/ttyUSB0,38400,8,NONE", "38400 8N2"},
                {"serial:/dev/ttyUSB0,38400,8,ODD,1", "38400 8O1"},
                {"serial:/dev/ttyUSB0,,,none", "19200 7N2"},
                {"serial:/dev/ttyUSB0, 38400, 8, EVEN, 1", "38400 8E1"}};
    for (const auto& row : rows)
        EXPECT_EQ(row.line, inWords(parsed(row.text).line)) << row.text;
}

TEST(LinkText, TheEndsOfEachRangeAreTaken)
{
    EXPECT_EQ("300 5E1", inWords(parsed("serial:/dev/ttyS0,300,5,EVEN,1").line));
    EXPECT_EQ("4000000 8E2", inWords(parsed("serial:/dev/ttyS0,4000000,8,EVEN,2").line));
    EXPECT_EQ(1, parsed("tcp:plc,1").port);
    EXPECT_EQ(65535, parsed("tcp:plc,65535").port);
}

TEST(LinkText, PartsOfANetworkLinkThatAreLeftOutTakeTheDefaults)
{
    const struct
    {
        const char* text;
        const char* host;
        int port;
    } rows[] = {{"tcp", "10.0.0.7", 4001},
                {"tcp:", "10.0.0.7", 4001},
                {"tcp:plc.local", "plc.local", 4001},
                {"tcp:,8001", "10.0.0.7", 8001},
                {"tcp:192.168.1.100,8000", "192.168.1.100", 8000}};
    for (const auto& row : rows) {
        const LinkAddress address = parsed(row.text);
        EXPECT_EQ(LinkAddress::NETWORK, address.kind) << row.text;
        EXPECT_EQ(row.host, address.host.toStdString()) << row.text;
        EXPECT_EQ(row.port, address.port) << row.text;
    }
}

TEST(LinkText, AnIpv6AddressKeepsItsColons)
{
    for (const char* text : {"tcp:fe80::1,8000", "tcp:[fe80::1],8000"}) {
        EXPECT_EQ("fe80::1", parsed(text).host.toStdString()) << text;
        EXPECT_EQ(8000, parsed(text).port) << text;
    }
}

TEST(LinkText, ABadTextIsExplainedInOneSentence)
{
    const struct
    {
        const char* text;
        const char* complaint;
    } rows[] = {
        {"", "the link \"\" is not sim, serial:DEVICE or tcp:HOST,PORT"},
        {"usb:1", "the link \"usb:1\" is not sim, serial:DEVICE or tcp:HOST,PORT"},
        {"/dev/ttyUSB0", "the link \"/dev/ttyUSB0\" is not sim, serial:DEVICE or tcp:HOST,PORT"},
        {"sim:1", "a simulated link is plain \"sim\", without anything behind it"},
        {"serial", "a serial link needs a device, such as serial:/dev/ttyUSB0"},
        {"serial:,9600", "a serial link needs a device, such as serial:/dev/ttyUSB0"},
        {"serial:/dev/ttyS0,9600,8,NONE,1,0",
         "the link has more parts than serial:DEVICE,BAUD,DATA BITS,PARITY,STOP BITS"},
        {"tcp:plc,8000,1", "the link has more parts than tcp:HOST,PORT"},
        {"tcp:plc:8000", "the port of \"plc:8000\" must follow a comma, not a colon"},
        {"tcp:[::1]:8000", "the port of \"[::1]:8000\" must follow a comma, not a colon"}};
    for (const auto& row : rows)
        EXPECT_EQ(row.complaint, complaint(row.text)) << row.text;
}

TEST(LinkText, ABadNumberIsNamedWithItsRange)
{
    const struct
    {
        const char* text;
        const char* complaint;
    } rows[] = {
        {"serial:/dev/ttyS0,fast", "the baud rate \"fast\" is not a number from 300 to 4000000"},
        {"serial:/dev/ttyS0,299", "the baud rate \"299\" is not a number from 300 to 4000000"},
        {"serial:/dev/ttyS0,4000001",
         "the baud rate \"4000001\" is not a number from 300 to 4000000"},
        {"serial:/dev/ttyS0,9600,4", "the number of data bits \"4\" is not a number from 5 to 8"},
        {"serial:/dev/ttyS0,9600,9", "the number of data bits \"9\" is not a number from 5 to 8"},
        {"serial:/dev/ttyS0,9600,8,NONE,0",
         "the number of stop bits \"0\" is not a number from 1 to 2"},
        {"serial:/dev/ttyS0,9600,8,NONE,1.5",
         "the number of stop bits \"1.5\" is not a number from 1 to 2"},
        {"tcp:plc,0", "the port \"0\" is not a number from 1 to 65535"},
        {"tcp:plc,65536", "the port \"65536\" is not a number from 1 to 65535"},
        {"tcp:plc,http", "the port \"http\" is not a number from 1 to 65535"}};
    for (const auto& row : rows)
        EXPECT_EQ(row.complaint, complaint(row.text)) << row.text;
}

TEST(LinkText, AnUnknownParityIsNamed)
{
    EXPECT_EQ("the parity \"MARK\" is not NONE, EVEN or ODD",
              complaint("serial:/dev/ttyS0,9600,8,MARK"));
}
