#include "soakHost.h"

namespace {

enum {
    STATIONS = 2,
    RECIPE_WORDS = 64,
    SEED = 20240611,
    EXCHANGES_A_START = 10000,
    BURST = 400, // below the 513 that the queue holds, with what else may be in it
    WRITTEN_WORDS = 500,
    SETTLING_EXCHANGES = 3000,
    OUTAGE_EXCHANGES = 12
};

// MODBUS Application Protocol V1.1b3, 6.5, 6.6 and 6.12.
enum { WRITE_COIL = 5, WRITE_REGISTER = 6, WRITE_REGISTERS = 16 };

// One in so many exchanges.
enum {
    INPUTS_MOVE = 10,
    A_WRITE = 4,
    A_ONE_SHOT_READ = 40,
    A_TRANSFER = 1500,
    AN_OUTAGE = 3000,
    A_LOST_REPLY = 60,
    A_BAD_BYTE = 60,
    A_CUT_REPLY = 60
};

struct Polled
{
    const char* area;
    int addr;
    int count;
    int unitMode;
};

const Polled POLLED[] = {{"MW", 3000, 20, 0},  {"MW", 3100, 8, 0},  {"QW", 0, 10, 0},
                         {"IW", 0, 10, 0},     {"IX", 16, 16, -1},  {"QX", 32, 16, -1},
                         {"MX", 3000, 16, -1}, {"MX", 3320, 16, -1}};

bool isWords(const Polled& polled)
{
    return polled.unitMode != -1;
}

KEY_ADDRESS keyOf(const Polled& polled, int station)
{
    KEY_ADDRESS key;
    key.station = station;
    key.regName = QLatin1String(polled.area);
    key.addr = polled.addr;
    key.count = polled.count;
    key.unitMode = polled.unitMode;
    return key;
}

/// Apart from each other, so that each stays a block.
_RCP_VAR_PRO recordAt(int addr, int count, int bufOffset)
{
    _RCP_VAR_PRO record;
    record.station = 1;
    record.regName = QLatin1String("MW");
    record.addr = addr;
    record.count = count;
    record.bufOffset = bufOffset;
    return record;
}

long long timesTold;

void note(int, int, QString&, int)
{
    ++timesTold;
}

} // namespace

SoakHost::SoakHost(const DriverLibrary& driver)
    : m_driver(driver),
      m_plc(STATIONS),
      m_random(SEED),
      m_shared(RECIPE_UPLOAD_FLAG + 1),
      m_recipe(2 * RECIPE_WORDS)
{
    start();
}

int SoakHost::draw(int below)
{
    return int(m_random() % std::uint64_t(below));
}

void SoakHost::start()
{
    char properties[] = "0#0#0#3#32";
    int status = -1;
    m_driver.initProperty(m_shared.data(), 0, m_recipe.data(), &status, properties, &m_mutex);
    m_driver.setAddrValueChangeCallBack(note);
    QList<KEY_ADDRESS> keys;
    for (int station = 1; station <= STATIONS; ++station) {
        for (const Polled& polled : POLLED)
            keys.append(keyOf(polled, station));
    }
    m_driver.addrMerge(keys);
    QVector<_RCP_VAR_PRO> records = {recordAt(3200, 8, 0), recordAt(3300, 4, 8),
                                     recordAt(3400, 16, 12)};
    m_driver.setRcpAddress(records);
    writeMany();
    ++m_figures.starts;
}

void SoakHost::writeOne()
{
    const Polled& polled = POLLED[draw(int(sizeof POLLED / sizeof POLLED[0]))];
    if (polled.area[0] == 'I') return;
    unsigned char value[2] = {static_cast<unsigned char>(draw(isWords(polled) ? 256 : 2)),
                              static_cast<unsigned char>(draw(256))};
    m_driver.setData(1 + draw(STATIONS), QLatin1String(polled.area),
                     polled.addr + draw(polled.count), 1, value, 0);
}

void SoakHost::writeMany()
{
    std::vector<unsigned char> values(2 * BURST, static_cast<unsigned char>(draw(256)));
    m_driver.setData(1, QLatin1String("MW"), 3000 + draw(WRITTEN_WORDS - BURST), BURST,
                     values.data(), 0);
}

void SoakHost::readOnce()
{
    KEY_ADDRESS key = keyOf(POLLED[draw(int(sizeof POLLED / sizeof POLLED[0]))], 1);
    key.count = key.unitMode == -1 ? 1 : 1 + draw(60);
    m_driver.addConditionRead(key, 0);
    ++m_figures.oneShotReads;
}

bool SoakHost::isTransferring() const
{
    return m_shared[RECIPE_DOWNLOAD_FLAG] != 0 || m_shared[RECIPE_UPLOAD_FLAG] != 0;
}

void SoakHost::transfer(RecipeFlag flag)
{
    for (unsigned char& byte : m_recipe)
        byte = static_cast<unsigned char>(draw(256));
    m_shared[flag] = 1;
    ++(flag == RECIPE_DOWNLOAD_FLAG ? m_figures.downloads : m_figures.uploads);
}

void SoakHost::addWork()
{
    if (draw(INPUTS_MOVE) == 0) m_plc.setElement(1 + draw(STATIONS), "IW", draw(10), draw(65536));
    if (draw(A_WRITE) == 0) writeOne();
    if (draw(A_ONE_SHOT_READ) == 0) readOnce();
    if (draw(AN_OUTAGE) == 0) m_silentExchanges = OUTAGE_EXCHANGES;
    if (draw(A_TRANSFER) == 0 && !isTransferring())
        transfer(draw(2) == 0 ? RECIPE_DOWNLOAD_FLAG : RECIPE_UPLOAD_FLAG);
}

QByteArray SoakHost::reply(const FRAME_PRO& frame, bool faults)
{
    const Bytes answer = m_plc.answer(Bytes(frame.sendBuf, frame.sendBuf + frame.sendLen));
    QByteArray received(reinterpret_cast<const char*>(answer.data()), int(answer.size()));
    if (!faults || received.isEmpty()) return received;
    if (m_silentExchanges > 0) {
        --m_silentExchanges;
        return QByteArray();
    }
    if (draw(A_LOST_REPLY) == 0) return QByteArray();
    if (draw(A_CUT_REPLY) == 0) received.chop(1 + draw(int(received.size())));
    if (draw(A_BAD_BYTE) == 0 && !received.isEmpty()) {
        const int at = draw(int(received.size()));
        received[at] = char(received.at(at) ^ (1 << draw(8)));
    }
    return received;
}

bool SoakHost::talk(bool faults)
{
    FRAME_PRO frame;
    if (m_driver.getSendFrame(&frame) == 0) return false;
    QByteArray received = reply(frame, faults);
    QString errorText;
    switch (m_driver.dealRcvFrame(received, errorText)) {
    case REPLY_ACCEPTED:
        countAccepted(frame.sendBuf[1]);
        break;
    case REPLY_GIVEN_UP:
        ++m_figures.givenUp;
        break;
    default:
        ++m_figures.rejected;
    }
    m_figures.told = timesTold;
    return true;
}

void SoakHost::countAccepted(int function)
{
    ++m_figures.accepted;
    if (function == WRITE_COIL) ++m_figures.bitFrames;
    if (function == WRITE_REGISTER) ++m_figures.wordFrames;
    if (function == WRITE_REGISTERS) ++m_figures.recipeFrames;
}

void SoakHost::exchange()
{
    // The driver keeps its place in a transfer over a start.
    if (++m_exchanges >= EXCHANGES_A_START && !isTransferring()) {
        m_exchanges = 0;
        start();
    }
    addWork();
    talk(true);
}

void SoakHost::restart()
{
    while (isTransferring())
        talk(false);
    m_exchanges = 0;
    start();
}

void SoakHost::settle()
{
    for (int i = 0; i < SETTLING_EXCHANGES; ++i)
        talk(false);
}

int SoakHost::wrongUnits() const
{
    int wrong = 0;
    for (int station = 1; station <= STATIONS; ++station) {
        for (const Polled& polled : POLLED) {
            const int bytes = isWords(polled) ? 2 : 1;
            std::vector<unsigned char> values(size_t(bytes * polled.count));
            m_driver.getData(station, QLatin1String(polled.area), polled.addr, polled.count,
                             values.data());
            for (int i = 0; i < polled.count; ++i) {
                const size_t at = size_t(bytes) * size_t(i);
                const int shown = values[at] + (bytes == 2 ? values[at + 1] * 256 : 0);
                if (shown != m_plc.element(station, polled.area, polled.addr + i)) ++wrong;
            }
        }
    }
    return wrong;
}
