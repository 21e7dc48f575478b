#include "plantDay.h"

namespace {

enum { ENOUGH_TO_WRAP = 700 };

void startLinks(EdgeBench& bench)
{
    bench.take({bench.reading("oven", "temperature", 20.5), bench.reading("oven", "door", 1),
                bench.reading("oven", "count", 7), bench.standing("oven", 1, true)});
    bench.passMs(30);
    bench.stand("mill", 1, true);
    bench.take({bench.reading("mill", "speed", -1), bench.reading("mill", "power", 4000000000.0)});
    bench.take({bench.standing("oven", 2, true), bench.reading("oven", "level", -5)});
}

void work(EdgeBench& bench, int readings)
{
    for (int i = 0; i < readings; ++i) {
        bench.passMs(7);
        bench.read("oven", "temperature", i * 0.25);
        bench.read("oven", "temperature", i * 0.25); // the history's row, not a change
        if (i % 5 == 0) bench.read("mill", "speed", -i, i % 2 == 0 ? GOOD : STALE);
        if (i % 50 == 49) bench.acknowledge();
        bench.commitRows();
    }
}

void silence(EdgeBench& bench)
{
    bench.read("oven", "level", -5, BAD);
    bench.stand("oven", 2, false);
    bench.passMs(2000);
    bench.take({bench.reading("oven", "level", -6), bench.standing("oven", 2, true)});
}

void command(EdgeBench& bench)
{
    bench.command("DCMD", QLatin1String("oven-1"), commandBytes("count", 0, 10, 12));
    bench.read("oven", "count", 12);
    WriteEnd end;
    end.id = 9;
    end.outcome = WriteEnd::CONFIRMED;
    for (const RecordedCommands::Write& write : std::exchange(bench.commands.writes, {}))
        write.ended(end);
    bench.turn();
    bench.command("DCMD", QLatin1String("oven-1"), commandBytes("nothing", 0, 10, 12));
    bench.command("NCMD", QString(), QByteArray("garbage"));
    bench.passMs(1100);
}

void newTag(EdgeBench& bench)
{
    std::vector<EdgeDevice> devices = plantDevices();
    devices[1].tags.push_back(tagOf("pressure", 2, Tag::UINT16));
    devices.erase(devices.begin() + 2);
    bench.node.setDevices(devices);
    bench.turn();
    bench.read("oven", "pressure", 3);
}

std::vector<Told> livedDay()
{
    EdgeBench::Setup setup;
    setup.servers = 2;
    setup.primaryHost = "scada";
    setup.keepsHistory = true;
    EdgeBench bench(setup);
    bench.sequence.last = 253;
    bench.turn();
    bench.cut(false); // nobody listens
    bench.passMs(1500);
    bench.accept(); // the second server
    bench.grant();
    bench.state(true, 1000);
    startLinks(bench);
    work(bench, ENOUGH_TO_WRAP);
    silence(bench);
    bench.command("NCMD", QString(), rebirthBytes());
    command(bench);
    work(bench, 20);
    bench.state(false, 2000);
    bench.acknowledge();
    bench.passMs(1500);
    bench.accept();
    bench.grant();
    bench.state(true, 500); // another server has times of its own
    work(bench, 20);
    bench.cut();
    work(bench, 20);
    bench.passMs(1500);
    bench.accept();
    bench.grant();
    bench.state(true, 2000); // as late as the last one there
    bench.command("NCMD", QString(), rebirthBytes());
    work(bench, 200);
    newTag(bench);
    bench.node.leave();
    bench.acknowledge();
    return bench.session.told;
}

} // namespace

const std::vector<Told>& plantDay()
{
    static const std::vector<Told> day = livedDay();
    return day;
}

bool isConnect(const Told& told)
{
    return told.what == Told::CONNECT;
}
bool isNodeBirth(const Told& told)
{
    return told.is("NBIRTH");
}
bool isDeviceBirth(const Told& told)
{
    return told.is("DBIRTH");
}
bool isBirth(const Told& told)
{
    return told.isBirth();
}
bool isNodeData(const Told& told)
{
    return told.is("NDATA");
}
bool isDeviceData(const Told& told)
{
    return told.is("DDATA");
}
bool isData(const Told& told)
{
    return told.isData();
}
bool isDeviceDeath(const Told& told)
{
    return told.is("DDEATH");
}
bool isNodeDeath(const Told& told)
{
    return told.is("NDEATH");
}
bool isAnyNodeDeath(const Told& told)
{
    return isConnect(told) || isNodeDeath(told);
}
bool isNumbered(const Told& told)
{
    return isBirth(told) || isData(told) || isDeviceDeath(told);
}
bool isSparkplug(const Told& told)
{
    return isNumbered(told) || isAnyNodeDeath(told);
}

void everyOne(bool (*which)(const Told&), void (*check)(const Told&))
{
    int found = 0;
    for (const Told& told : plantDay()) {
        if (!which(told)) continue;
        ++found;
        SCOPED_TRACE(told.message.topic.toStdString() + ", session " +
                     std::to_string(told.session));
        check(told);
        if (testing::Test::HasFailure()) return; // one is enough to be read
    }
    EXPECT_GT(found, 0) << "no message of this kind was sent";
}

void isQos0Unretained(const Told& told)
{
    isQos0(told);
    isUnretained(told);
}

void isQos0(const Told& told)
{
    EXPECT_EQ(0, told.message.qos);
}

void isUnretained(const Told& told)
{
    EXPECT_FALSE(told.message.isRetained);
}

void isReadable(const Told& told)
{
    EXPECT_TRUE(told.payload.isReadable);
}

void hasTimeOfSending(const Told& told)
{
    ASSERT_TRUE(told.payload.time);
    EXPECT_EQ(told.wall, *told.payload.time);
}

void hasSeq(const Told& told)
{
    ASSERT_TRUE(told.payload.seq);
    EXPECT_LE(*told.payload.seq, 255u);
}

void isNextSeq(bool (*which)(const Told&))
{
    int found = 0, wraps = 0;
    quint64 last = 0;
    for (const Told& told : plantDay()) {
        if (!isNumbered(told)) continue;
        ASSERT_TRUE(told.payload.seq);
        const quint64 seq = *told.payload.seq;
        const quint64 expected = isNodeBirth(told) ? 0 : (last + 1) % 256;
        if (which(told)) {
            ++found;
            ASSERT_EQ(expected, seq) << told.message.topic.toStdString();
            if (seq == 0 && !isNodeBirth(told)) ++wraps;
        }
        last = seq;
    }
    EXPECT_GT(found, 0) << "no message of this kind was sent";
    if (which != isDeviceData) return;
    EXPECT_GT(wraps, 0) << "seq was not seen to begin anew behind 255";
}
