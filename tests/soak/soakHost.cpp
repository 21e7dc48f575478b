#include "soakHost.h"

namespace {

enum {
    STATIONS = 2,
    GROUP_BITS = 16,
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

const std::vector<Units>& polledUnits()
{
    static const std::vector<Units> units = [] {
        std::vector<Units> all;
        for (int station = 1; station <= STATIONS; ++station)
            all.insert(all.end(), {{station, "MW", 3000, 20},
                                   {station, "MW", 3100, 8},
                                   {station, "QW", 0, 10},
                                   {station, "IW", 0, 10},
                                   {station, "IX", 16, GROUP_BITS},
                                   {station, "QX", 32, GROUP_BITS},
                                   {station, "MX", 3000, GROUP_BITS},
                                   {station, "MX", 3320, GROUP_BITS}});
        return all;
    }();
    return units;
}

bool isBits(const Units& units)
{
    return units.area[1] == 'X';
}

long long timesTold;

void note(int, int, QString&, int)
{
    ++timesTold;
}

} // namespace

SoakHost::SoakHost(const DriverFunctions& driver)
    : m_bench(driver, {3, 32, RECIPE_WORDS, note}), m_plc(STATIONS), m_random(SEED)
{
    start();
}

int SoakHost::draw(int below)
{
    return m_random.below(below);
}

const Units& SoakHost::drawnUnits()
{
    return m_random.pick(polledUnits());
}

void SoakHost::start()
{
    m_bench.start();
    m_bench.poll(polledUnits());
    // Apart from each other, so that each stays a block.
    m_bench.setRecipe({{1, "MW", 3200, 8}, {1, "MW", 3300, 4}, {1, "MW", 3400, 16}});
    fillCache();
    ++m_figures.starts;
}

/// What is looked at stays in the cache: it has its whole size before memory is first measured.
void SoakHost::fillCache() const
{
    m_bench.read({1, "MW", 3000, WORDS});
    m_bench.read({1, "QW", 0, MOST_READ_ONCE});
    m_bench.read({1, "IW", 0, MOST_READ_ONCE});
}

void SoakHost::writeOne()
{
    Units units = drawnUnits();
    if (units.area[0] == 'I') return;
    units.first += draw(units.count);
    units.count = 1;
    m_bench.write(units, {draw(isBits(units) ? 2 : 65536)});
}

void SoakHost::writeMany()
{
    const std::vector<int> values(BURST, draw(65536));
    m_bench.write({1, "MW", 3000 + draw(WORDS - BURST), BURST}, values);
}

void SoakHost::readOnce()
{
    Units units = drawnUnits();
    units.station = 1;
    units.count = isBits(units) ? 1 : 1 + draw(MOST_READ_ONCE);
    m_bench.readOnce(units);
    ++m_figures.oneShotReads;
}

void SoakHost::transfer(RecipeFlag flag)
{
    for (int word = 0; word < RECIPE_WORDS; ++word)
        m_bench.setRecipeWord(word, draw(65536));
    m_bench.raise(flag);
    ++(flag == RECIPE_DOWNLOAD_FLAG ? m_figures.downloads : m_figures.uploads);
}

void SoakHost::addWork()
{
    if (draw(INPUTS_MOVE) == 0) m_plc.setElement(1 + draw(STATIONS), "IW", draw(10), draw(65536));
    if (draw(A_WRITE) == 0) writeOne();
    if (draw(A_BURST) == 0) writeMany();
    if (draw(A_ONE_SHOT_READ) == 0) readOnce();
    if (draw(AN_OUTAGE) == 0) m_silentExchanges = OUTAGE_EXCHANGES;
    if (draw(A_TRANSFER) == 0 && !m_bench.transferUnderWay())
        transfer(draw(2) == 0 ? RECIPE_DOWNLOAD_FLAG : RECIPE_UPLOAD_FLAG);
}

QByteArray SoakHost::reply(const FRAME_PRO& frame, Line line)
{
    QByteArray received = m_plc.answer(requestOf(frame));
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
    if (!m_bench.nextFrame(frame)) return false;
    const int result = m_bench.takeReply(reply(frame, line));
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
    while (m_bench.transferUnderWay())
        talk(PERFECT);
    start();
}

void SoakHost::writeWord(int number)
{
    m_bench.write({1, "MW", 3000 + number % WORDS, 1}, {draw(256)});
}

void SoakHost::readWord(int number)
{
    m_bench.readOnce({1, "MW", 3000 + number % WORDS, 1});
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
    for (const Units& units : polledUnits()) {
        const std::vector<int> shown = m_bench.read(units);
        for (int i = 0; i < units.count; ++i) {
            const int held = m_plc.element(units.station, units.area, units.first + i);
            wrong += shown[size_t(i)] != held ? 1 : 0;
        }
    }
    return wrong;
}
