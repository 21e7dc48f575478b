// The simulated PLC on a serial port, which a cable of two pseudo-terminals joins to the host's.

#include "links/serialLink.h"
#include "pollingHost.h"
#include "simulatorProcess.h"
#include "terminalCable.h"

#include <gtest/gtest.h>

namespace {

enum { VALUE = 4711 };

LinkThread::OpenLink openerOf(const std::string& device)
{
    return [device] {
        return std::unique_ptr<Link>(
            new SerialLink(QString::fromStdString(device), LineSettings()));
    };
}

} // namespace

TEST(SerialSimulator, ServesAHostAtTheOtherEndOfTheCable)
{
    const TerminalCable cable;
    SimulatorProcess plc(
        {"--serial", cable.end(0), "--station", "1,2", "--signal", "2:IW:3:toggle:86400000:815"});
    EXPECT_EQ(cable.end(0), plc.address());
    const std::vector<Tag> tags = tagsFrom({"MW100", "QX4.3", "2:IW6"});
    std::vector<TagState> states;
    {
        PollingHost host(PollingHost::settings(openerOf(cable.end(1))), tags);
        host.write({elementOf(tags[0], VALUE), elementOf(tags[1], 1)});
        ASSERT_TRUE(host.await([&] { return host.ledger.open() == 0; }));
        EXPECT_EQ(1, host.ledger.count(JobEnd::DONE));
        const qint64 written = host.now();
        ASSERT_TRUE(host.await([&] { return host.allReadSince(written); })) << host.badTags();
        states = host.states();
    }
    plc.end();
    EXPECT_EQ(QByteArray::fromHex("6712"), plc.bytesOf(tags[0])); // 4711 is 0x1267, low byte first
    EXPECT_EQ(QByteArray::fromHex("01"), plc.bytesOf(tags[1]));
    for (size_t tag = 0; tag < tags.size(); ++tag)
        EXPECT_EQ(plc.bytesOf(tags[tag]), states[tag].bytes) << tags[tag].name.toStdString();
    EXPECT_EQ(0, plc.reported("bad_frames"));
}
