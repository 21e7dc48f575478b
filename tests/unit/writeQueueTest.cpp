#include "cacheHelpers.h"

#include <cstring>

namespace {

enum { STATION = 1, VAR_ID = 77, CAP = 513 };

class WriteQueue : public DriverTest
{
protected:
    WriteQueue()
    {
        initialise();
    }

    int write(const char* regName, int addr, int count, std::vector<unsigned char> values,
              int varId = VAR_ID)
    {
        return intf_setData(STATION, text(regName), addr, count, values.data(), varId);
    }

    /// Queues words 0, 1, 2 … of MW.
    void queueWords(int entries)
    {
        for (int i = 0; i < entries; ++i)
            driver.writeList.append(variable(STATION, "MW", i, 1));
    }

    static int queued()
    {
        return int(driver.writeList.size());
    }
};

/// The entry as "id station area addr count: value bytes up to the last that is not 0".
std::string entry(int index)
{
    const VARIABLE& var = driver.writeList.at(index);
    int length = VALUE_BYTES;
    while (length > 0 && var.value[length - 1] == 0)
        --length;
    std::string out = std::to_string(var.varId) + " " + std::to_string(var.station) + " " +
                      var.regName.toStdString() + " " + std::to_string(var.addr) + " " +
                      std::to_string(var.count) + ":";
    for (int i = 0; i < length; ++i)
        out += " " + std::to_string(var.value[i]);
    return out;
}

} // namespace

TEST_F(WriteQueue, EachWordOrBitIsAnEntryOfItsOwn)
{
    struct
    {
        const char* area;
        std::vector<unsigned char> values;
        std::vector<std::string> entries;
    } const rows[] = {
        {"MW", {0x34, 0x12, 1, 2}, {"77 1 MW 10 1: 52 18", "77 1 MW 11 1: 1 2"}},
        {"IW", {1, 0}, {"77 1 IW 10 1: 1"}},
        {"QW", {1, 0}, {"77 1 QW 10 1: 1"}},
        // Bit bytes other than one are carried as they are.
        {"MX", {2, 255}, {"77 1 MX 10 1: 2", "77 1 MX 11 1: 255"}},
        {"IX", {1}, {"77 1 IX 10 1: 1"}},
        {"QX", {1, 0, 1}, {"77 1 QX 10 1: 1", "77 1 QX 11 1:", "77 1 QX 12 1: 1"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.area);
        driver.writeList.clear();
        EXPECT_EQ(1, write(row.area, 10, int(row.entries.size()), row.values));
        ASSERT_EQ(row.entries.size(), size_t(queued()));
        for (int i = 0; i < queued(); ++i)
            EXPECT_EQ(row.entries[size_t(i)], entry(i));
    }
}

TEST_F(WriteQueue, ABurstToOneElementTakesTwoEntriesAtMost)
{
    for (int i = 0; i < 50; ++i)
        write("MW", 10, 1, {static_cast<unsigned char>(i), 0});
    ASSERT_EQ(2, queued());
    EXPECT_EQ("77 1 MW 10 1:", entry(0));
    EXPECT_EQ("77 1 MW 10 1: 49", entry(1));
}

TEST_F(WriteQueue, AWriteLongerThanTheQueueKeepsItsLastElement)
{
    std::vector<unsigned char> bits(600, 0);
    bits.back() = 1;
    write("QX", 0, 600, bits);
    ASSERT_EQ(CAP, queued());
    EXPECT_EQ("77 1 QX 511 1:", entry(511));
    EXPECT_EQ("77 1 QX 599 1: 1", entry(512));
}

TEST_F(WriteQueue, TheBlockLimitsDoNotChangeWhatIsQueued)
{
    for (int mergeLimit : {2, 0, -1}) {
        initialise(3, mergeLimit);
        write("MW", 10, 40, std::vector<unsigned char>(80, 1));
        ASSERT_EQ(40, queued()) << mergeLimit;
        EXPECT_EQ("77 1 MW 49 1: 1 1", entry(39));
    }
}

TEST_F(WriteQueue, AValueThatTheHostAlreadySeesIsQueuedAndPendingButNotReported)
{
    putUnit(STATION, "MW", 10, 0x1234, 1);
    write("MW", 10, 1, {0x34, 0x12});
    EXPECT_EQ(1, queued());
    EXPECT_EQ(1, cachedUnit(STATION, "MW", 10).writePending);
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(WriteQueue, ALocalDriverStoresAndReportsButQueuesNothing)
{
    for (int localOnly : {1, 2, -1}) {
        SCOPED_TRACE(localOnly);
        initialise(3, 32, localOnly);
        queueWords(2);
        putUnit(STATION, "MW", 1, 0, 1);
        EXPECT_EQ(1, write("MW", 1, 1, {5, 0}));
        EXPECT_EQ(1, write("QX", 4, 1, {1}));
        ASSERT_EQ(2, queued());
        EXPECT_EQ("0 1 MW 0 1:", entry(0));
        EXPECT_EQ("0 1 MW 1 1:", entry(1));
        EXPECT_EQ(5, cachedUnit(STATION, "MW", 1).writeImage[0]);
        EXPECT_EQ(1, cachedUnit(STATION, "QX", 4).writePending);
        EXPECT_EQ((Notifications{{CONTEXT, STATION, "MW", 1}, {CONTEXT, STATION, "QX", 4}}),
                  takeNotifications());
    }
}

TEST_F(WriteQueue, NoElementsQueueAndStoreNothing)
{
    for (const char* area : {"MW", "QX"}) {
        for (int count : {0, -1, int(LOWEST)}) {
            EXPECT_EQ(1, write(area, 10, count, {1, 1}));
            EXPECT_EQ(0, queued()) << area << " " << count;
            EXPECT_EQ(0, int(driver.dataAreas.size())) << area << " " << count;
        }
    }
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(WriteQueue, AnUnknownAreaQueuesAndStoresNothing)
{
    for (const char* area : {"", "XX", "mw", "MW_bit", "MX_bit", "MW "}) {
        EXPECT_EQ(1, write(area, 10, 2, {1, 1, 1, 1}));
        EXPECT_EQ(0, queued()) << area;
        EXPECT_EQ(0, int(driver.dataAreas.size())) << area;
    }
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(WriteQueue, NullValuesQueueAndStoreNothing)
{
    EXPECT_EQ(1, intf_setData(STATION, text("MW"), 10, 3, nullptr, VAR_ID));
    EXPECT_EQ(0, queued());
    EXPECT_EQ(0, int(driver.dataAreas.size()));
}

TEST_F(WriteQueue, AddressesAreNotChecked)
{
    for (int addr : {-5, int(LOWEST), int(HIGHEST)}) {
        driver.writeList.clear();
        EXPECT_EQ(1, write("QW", addr, 1, {1, 0}));
        ASSERT_EQ(1, queued());
        EXPECT_EQ(addr, driver.writeList.at(0).addr);
        EXPECT_EQ(1, cachedUnit(STATION, "QW", addr).writePending);
    }
}

TEST_F(WriteQueue, BroadcastsAreQueuedLikeOthers)
{
    unsigned char values[] = {1, 0};
    intf_setData(0, text("MW"), 10, 1, values, VAR_ID);
    ASSERT_EQ(1, queued());
    EXPECT_EQ("77 0 MW 10 1: 1", entry(0));
}

TEST_F(WriteQueue, TheHostsValuesAreLeftAsTheyAre)
{
    unsigned char values[] = {0x34, 0x12, 7, 8};
    const unsigned char before[] = {0x34, 0x12, 7, 8};
    intf_setData(STATION, text("MW"), 10, 2, values, VAR_ID);
    EXPECT_EQ(0, std::memcmp(before, values, sizeof values));
}
