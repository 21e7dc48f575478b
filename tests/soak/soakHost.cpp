#include "soakHost.h"

namespace {

enum {
    STATIONS = 2,
    RECIPE_WORDS = 64,
    SEED = 20240611,
    QUEUE_PLACES = 513,
    BURST = 400, // below the queue's places, with what else may be in it
    WORDS = QUEUE_PLACES,
    ROUND_EXCHANGES = 3000, // a full list goes through all of its memory, which it doubles twice
    POLLED_ID = 4,
    MOST_READ_ONCE = 60,
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
    A_BURST = 5000,
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
    fillCache();
    ++m_figures.starts;
}

/// What is looked at stays in the cache: it has its whole size before memory is first measured.
void SoakHost::fillCache()
{
    unsigned char values[2 * WORDS];
    m_driver.getData(1, QLatin1String("MW"), 3000, WORDS, values);
    m_driver.getData(1, QLatin1String("QW"), 0, MOST_READ_ONCE, values);
    m_driver.getData(1, QLatin1String("IW"), 0, MOST_READ_ONCE, values);
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
    m_driver.setData(1, QLatin1String("MW"), 3000 + draw(WORDS - BURST), BURST, values.data(), 0);
}

void SoakHost::readOnce()
{
    KEY_ADDRESS key = keyOf(POLLED[draw(int(sizeof POLLED / sizeof POLLED[0]))], 1);
    key.count = key.unitMode == -1 ? 1 : 1 + draw(MOST_READ_ONCE);
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
    if (draw(A_BURST) == 0) writeMany();
    if (draw(A_ONE_SHOT_READ) == 0) readOnce();
    if (draw(AN_OUTAGE) == 0) m_silentExchanges = OUTAGE_EXCHANGES;
    if (draw(A_TRANSFER) == 0 && !isTransferring())
        transfer(draw(2) == 0 ? RECIPE_DOWNLOAD_FLAG : RECIPE_UPLOAD_FLAG);
}

QByteArray SoakHost::reply(const FRAME_PRO& frame, Line line)
{
    const Bytes answer = m_plc.answer(Bytes(frame.sendBuf, frame.sendBuf + frame.sendLen));
    QByteArray received(reinterpret_cast<const char*>(answer.data()), int(answer.size()));
    if (line == PERFECT || received.isEmpty()) return received;
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

bool SoakHost::talk(Line line)
{
    FRAME_PRO frame;
    if (m_driver.getSendFrame(&frame) == 0) return false;
    QByteArray received = reply(frame, line);
    QString errorText;
    const int result = m_driver.dealRcvFrame(received, errorText);
    if (line == FAULTY) count(result, frame.sendBuf[1]);
    return frame.var.varId != POLLED_ID;
}

void SoakHost::count(int result, int function)
{
    m_figures.told = timesTold;
    switch (result) {
    case REPLY_ACCEPTED:
        countAccepted(function);
        break;
    case REPLY_GIVEN_UP:
        ++m_figures.givenUp;
        break;
    default:
        ++m_figures.rejected;
    }
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
    addWork();
    talk(FAULTY);
}

void SoakHost::rest()
{
    for (int i = 0; i < SETTLING_EXCHANGES; ++i)
        talk(PERFECT);
}

void SoakHost::restart()
{
    // The driver keeps its place in a transfer over a start.
    while (isTransferring())
        talk(PERFECT);
    start();
}

void SoakHost::writeWord(int number)
{
    unsigned char value[2] = {static_cast<unsigned char>(draw(256)), 0};
    m_driver.setData(1, QLatin1String("MW"), 3000 + number % WORDS, 1, value, 0);
}

void SoakHost::readWord(int number)
{
    KEY_ADDRESS key = keyOf({"MW", 3000 + number % WORDS, 1, 0}, 1);
    m_driver.addConditionRead(key, 0);
}

/// A queue keeps the memory that it once needed: a full one goes round in it, so that it needs no
/// more later.
void SoakHost::fillAndEmpty(void (SoakHost::*add)(int number))
{
    int added = 0;
    while (added < QUEUE_PLACES)
        (this->*add)(added++);
    for (int i = 0; i < ROUND_EXCHANGES; ++i) {
        if (talk(PERFECT)) (this->*add)(added++);
    }
    rest();
}

void SoakHost::settle()
{
    rest();
    fillAndEmpty(&SoakHost::writeWord);
    fillAndEmpty(&SoakHost::readWord);
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
