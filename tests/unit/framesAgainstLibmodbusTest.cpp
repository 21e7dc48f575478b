#include "builtRequests.h"

#include <modbus/modbus.h>

#include <sys/socket.h>
#include <unistd.h>

/// The driver's requests beside those of an independent master. libmodbus writes each request to
/// one end of a pair of sockets; the other end is closed for writing, so libmodbus sees the end of
/// the stream where it looks for a reply and returns at once.
class FramesAgainstLibmodbus : public DriverTest
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(0, socketpair(AF_UNIX, SOCK_STREAM, 0, ends));
        ASSERT_EQ(0, shutdown(ends[1], SHUT_WR));
        // The device is never opened; the name has only to be there.
        master = modbus_new_rtu("unused", 9600, 'N', 8, 1);
        ASSERT_NE(nullptr, master);
        ASSERT_EQ(0, modbus_set_socket(master, ends[0]));
        ASSERT_EQ(0, modbus_set_response_timeout(master, 0, 1000));
    }

    void TearDown() override
    {
        modbus_free(master);
        close(ends[0]);
        close(ends[1]);
    }

    /// What libmodbus has written since the last call.
    std::string sent()
    {
        char buffer[MODBUS_RTU_MAX_ADU_LENGTH];
        const ssize_t length = recv(ends[1], buffer, sizeof buffer, MSG_DONTWAIT);
        return length <= 0 ? "nothing" : hex(QByteArray(buffer, int(length)));
    }

    std::string readByLibmodbus(const VARIABLE& wanted, bool inputs)
    {
        uint16_t registers[MODBUS_MAX_READ_REGISTERS];
        modbus_set_slave(master, wanted.station);
        if (inputs)
            modbus_read_input_registers(master, wanted.addr, wanted.count, registers);
        else
            modbus_read_registers(master, wanted.addr, wanted.count, registers);
        return sent();
    }

    std::string wordsByLibmodbus(const VARIABLE& written)
    {
        std::vector<uint16_t> words;
        for (int i = 0; i < written.count; ++i)
            words.push_back(
                static_cast<uint16_t>(written.value[2 * i] + 256 * written.value[2 * i + 1]));
        modbus_set_slave(master, written.station);
        if (written.count == 1)
            modbus_write_register(master, written.addr, words[0]);
        else
            modbus_write_registers(master, written.addr, written.count, words.data());
        return sent();
    }

    std::string bitsByLibmodbus(const VARIABLE& written)
    {
        modbus_set_slave(master, written.station);
        if (written.count == 1)
            modbus_write_bit(master, written.addr, written.value[0]);
        else
            modbus_write_bits(master, written.addr, written.count, written.value);
        return sent();
    }

    modbus_t* master = nullptr;
    int ends[2] = {-1, -1};
};

namespace {

const int STATIONS[] = {1, 2, 17, 100, 127, 128, 246, 247};
const int ADDRESSES[] = {0, 1, 255, 256, 3000, 7095, 32767, 32768, 65534, 65535};

VARIABLE withWords(VARIABLE written, int seed)
{
    for (int i = 0; i < 2 * written.count; ++i)
        written.value[i] = static_cast<unsigned char>(seed + 37 * i);
    return written;
}

VARIABLE withBits(VARIABLE written, int seed)
{
    for (int i = 0; i < written.count; ++i)
        written.value[i] = static_cast<unsigned char>((seed + i * i / 3) % 2);
    return written;
}

std::string caseOf(const VARIABLE& var)
{
    return var.regName.toStdString() + " of station " + std::to_string(var.station) + " from " +
           std::to_string(var.addr) + ", count " + std::to_string(var.count);
}

/// Runs `compare` for every station, address and count.
template <typename Compare>
void forEachCase(const char* area, std::initializer_list<int> counts, Compare compare)
{
    for (int station : STATIONS) {
        for (int addr : ADDRESSES) {
            for (int count : counts) {
                const VARIABLE var = variable(station, area, addr, count);
                SCOPED_TRACE(caseOf(var));
                compare(var);
            }
        }
    }
}

} // namespace

TEST_F(FramesAgainstLibmodbus, WordReads)
{
    for (const char* area : {"MW", "QW", "IW"}) {
        const bool inputs = area[0] == 'I';
        forEachCase(area, {1, 2, 100, 125}, [this, inputs](const VARIABLE& wanted) {
            EXPECT_EQ(readByLibmodbus(wanted, inputs), hex(readRequestFor(wanted)));
        });
    }
}

TEST_F(FramesAgainstLibmodbus, WholeRegistersOfBits)
{
    forEachCase("QX", {1, 2, 100, 125}, [this](const VARIABLE& registers) {
        VARIABLE bits = registers;
        bits.addr *= 16;
        bits.count *= 16;
        EXPECT_EQ(readByLibmodbus(registers, false), hex(readRequestFor(bits)));
        bits.regName = text("IX");
        EXPECT_EQ(readByLibmodbus(registers, true), hex(readRequestFor(bits)));
    });
}

TEST_F(FramesAgainstLibmodbus, BitWrites)
{
    for (int seed : {0, 1}) {
        for (const char* area : {"QX", "MX"})
            forEachCase(area, {1, 2, 7, 8, 9, 15, 16, 17, 500, 1023, 1024},
                        [this, seed](const VARIABLE& empty) {
                            const VARIABLE written = withBits(empty, seed);
                            EXPECT_EQ(bitsByLibmodbus(written), hex(writeRequestFor(written)));
                        });
    }
}

TEST_F(FramesAgainstLibmodbus, WordWrites)
{
    for (int seed : {0, 1, 0x7F, 0x80, 0xA5, 0xFF}) {
        forEachCase(seed % 2 == 0 ? "QW" : "MW", {1, 2, 3, 64, 122, 123},
                    [this, seed](const VARIABLE& empty) {
                        const VARIABLE written = withWords(empty, seed);
                        EXPECT_EQ(wordsByLibmodbus(written), hex(writeRequestFor(written)));
                    });
    }
}
