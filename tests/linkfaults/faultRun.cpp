#include "faultRun.h"

#include "builtDriver.h"

#include <algorithm>
#include <numeric>

namespace {

enum {
    FAULT_EVERY = 6,
    WRITE_EVERY = 3,
    MOST_AT_ONCE = 3,
    BURST_EVERY = 3000,
    BURST = 300,
    MOST_OPEN = 450, // past 513 the driver would lose the newest but one
    ONE_SHOT_EVERY = 40,
    TRANSFER_EVERY = 1500,
    MOVE_EVERY = 4,
    ONE_SHOT_ID = 77,
    WRITE_COIL = 5,
    WRITE_REGISTER = 6,
    MOST_PROBLEMS = 10,
    EXCHANGES_TO_SETTLE = 5000
};

const Told ONE_SHOT_READ = {-1, -1, "-1", 0};
const Told ONE_SHOT_FAILED = {-1, -1, "-1", -1};

bool isBit(const Units& units)
{
    return units.area[1] == 'X';
}

bool isWrite(const FRAME_PRO& frame)
{
    return frame.sendBuf[1] == WRITE_COIL || frame.sendBuf[1] == WRITE_REGISTER;
}

std::string nameOf(const Element& element)
{
    return std::to_string(element.station) + ":" + element.area + " " +
           std::to_string(element.number);
}

int recipeWords()
{
    const std::vector<Units> all = recipeUnits();
    return std::accumulate(all.begin(), all.end(), 0,
                           [](int words, const Units& units) { return words + units.count; });
}

} // namespace

FaultRun::FaultRun(std::uint32_t seed, int retryLimit, HostKind kind)
    : m_random(seed),
      m_plc(STATIONS),
      m_line(m_plc, seed + 1),
      m_kind(kind),
      m_listening(m_line),
      m_plain(m_line),
      m_panel(driver(), {retryLimit}),
      m_written(writtenUnits()),
      m_readOnce(unitsReadOnce()),
      m_moving(movingUnits())
{
    if (m_kind == PLAIN) m_line.loseLateReplies();
    m_blocks = m_panel.poll(polledUnits());
    m_panel.setRecipe(recipeUnits());
}

void FaultRun::disturb(int exchanges)
{
    m_line.setFaultEvery(FAULT_EVERY);
    for (int i = 0; i < exchanges && m_problems.empty(); ++i) {
        makeTraffic();
        exchange();
    }
}

void FaultRun::settle()
{
    m_line.setFaultEvery(0);
    for (int i = 0; (i < FaultyLine::LATEST || !isQuiet()) && m_problems.empty(); ++i) {
        if (i == EXCHANGES_TO_SETTLE) return problem("does not come to rest");
        exchange();
    }
}

void FaultRun::cycle()
{
    const int accepted = m_figures.accepted;
    for (int i = 0; i < m_blocks; ++i)
        exchange();
    if (m_figures.accepted != accepted + m_blocks) problem("a good line, and a reply refused");
}

void FaultRun::problem(const std::string& text)
{
    if (m_problems.size() < MOST_PROBLEMS)
        m_problems.push_back("exchange " + std::to_string(m_figures.exchanges) + ": " + text);
}

void FaultRun::makeTraffic()
{
    if (m_random.oneIn(WRITE_EVERY)) writeSome(1 + m_random.below(MOST_AT_ONCE));
    if (m_random.oneIn(BURST_EVERY)) writeSome(BURST);
    if (m_random.oneIn(MOVE_EVERY)) moveSome();
    if (m_random.oneIn(TRANSFER_EVERY)) startTransfer();
    if (m_oneShotOpen || !m_random.oneIn(ONE_SHOT_EVERY)) return;
    m_oneShotOpen = true;
    m_panel.readOnce(m_random.pick(m_readOnce), ONE_SHOT_ID);
}

void FaultRun::writeSome(int elements)
{
    while (elements > 0 && m_accounts.openCount() + MOST_AT_ONCE <= MOST_OPEN) {
        Units units = m_random.pick(m_written);
        const int start = m_random.below(units.count);
        units.first += start;
        units.count = std::min({units.count - start, elements, int(MOST_AT_ONCE)});
        elements -= units.count;
        writeRun(units);
    }
}

void FaultRun::writeRun(const Units& units)
{
    const int id = ++m_lastId;
    std::vector<int> values;
    for (int i = 0; i < units.count; ++i) {
        values.push_back(m_random.below(isBit(units) ? 2 : 65536));
        m_accounts.open({id, {units.station, units.area, units.first + i}, values.back()});
    }
    m_panel.write(units, values, id);
}

/// Between two frames, as the driver tells a transfer's frame from another by the flag alone.
void FaultRun::startTransfer()
{
    if (m_framePending || m_transfer != NO_TRANSFER) return;
    m_transfer = m_random.oneIn(2) ? DOWNLOAD : UPLOAD;
    m_recipeWordsTold = 0;
    for (int i = 0; i < recipeWords(); ++i)
        m_panel.setRecipeWord(i, m_random.below(65536));
    m_panel.raise(m_transfer == DOWNLOAD ? RECIPE_DOWNLOAD_FLAG : RECIPE_UPLOAD_FLAG);
}

void FaultRun::moveSome()
{
    const Units& units = m_random.pick(m_moving);
    const int number = units.first + m_random.below(units.count);
    m_plc.setElement(units.station, units.area, number, m_random.below(isBit(units) ? 2 : 65536));
}

void FaultRun::exchange()
{
    ++m_figures.exchanges;
    FRAME_PRO frame;
    if (!m_panel.nextFrame(frame)) return problem("no frame while blocks are polled");
    m_panel.told.clear();
    const int result = m_panel.takeReply(m_kind == LISTENING ? m_listening.exchange(frame)
                                                             : m_plain.exchange(frame));
    m_framePending = result == REPLY_RETRY;
    if (result == REPLY_ACCEPTED) ++m_figures.accepted;
    if (result == REPLY_GIVEN_UP) ++m_figures.givenUp;
    const bool oneShot =
        m_transfer == NO_TRANSFER && !isWrite(frame) && frame.var.varId == ONE_SHOT_ID;
    checkOneShotCalls(oneShot && !m_framePending, result);
    if (m_framePending) return;
    if (m_transfer != NO_TRANSFER) return endTransferFrame(result);
    if (isWrite(frame)) return endWrite(frame, result);
    endRead(frame, result);
}

void FaultRun::endWrite(const FRAME_PRO& frame, int result)
{
    const Element asked = {frame.var.station, frame.var.regName.toStdString(), frame.var.addr};
    if (!m_accounts.isOldest(frame.var.varId, asked)) return problem("not this write's turn");
    const BookedWrite write = m_accounts.oldest();
    const Element& element = write.element;
    if (result == REPLY_GIVEN_UP) {
        if (!wasTold({BenchHost::CONTEXT, element.station, element.area, element.number}))
            problem("nobody was told that a write was withdrawn: " + nameOf(element));
        return m_accounts.withdrawOldest();
    }
    if (m_plc.element(element.station, element.area, element.number) != write.value)
        problem("confirmed and not in memory: " + nameOf(element));
    if (m_panel.shown(element.station, element.area, element.number) !=
        m_accounts.newestValue(element))
        problem("confirmed and not shown: " + nameOf(element));
    m_accounts.confirmOldest();
}

void FaultRun::endRead(const FRAME_PRO& frame, int result)
{
    const bool oneShot = frame.var.varId == ONE_SHOT_ID;
    m_oneShotOpen = m_oneShotOpen && !oneShot;
    if (oneShot) ++(result == REPLY_ACCEPTED ? m_figures.oneShotsRead : m_figures.oneShotsFailed);
    if (result != REPLY_ACCEPTED) return;
    const std::string area = frame.var.regName.toStdString();
    // What the panel writes may be shown before the PLC has it.
    if (oneShot || area[0] == 'I')
        checkShown({frame.var.station, area, frame.var.addr, frame.var.count});
}

void FaultRun::endTransferFrame(int result)
{
    for (const Told& told : m_panel.told)
        if (told.area == "RWI") ++m_recipeWordsTold;
    if (m_panel.transferUnderWay()) {
        if (result == REPLY_GIVEN_UP) problem("a transfer that failed goes on");
        return;
    }
    if (result == REPLY_GIVEN_UP)
        ++m_figures.transfersFailed;
    else
        checkTransferred();
    m_transfer = NO_TRANSFER;
}

void FaultRun::checkTransferred()
{
    ++(m_transfer == DOWNLOAD ? m_figures.downloads : m_figures.uploads);
    if (m_transfer == UPLOAD && m_recipeWordsTold != recipeWords())
        problem("not told of every uploaded word");
    int at = 0;
    for (const Units& units : recipeUnits())
        for (int i = 0; i < units.count; ++i, ++at)
            if (m_plc.element(units.station, units.area, units.first + i) != m_panel.recipeWord(at))
                problem("recipe and memory differ at word " + std::to_string(at));
}

void FaultRun::checkShown(const Units& units)
{
    for (int number = units.first; number < units.first + units.count; ++number)
        if (m_panel.shown(units.station, units.area, number) !=
            m_plc.element(units.station, units.area, number))
            problem("read and not shown: " + nameOf({units.station, units.area, number}));
}

void FaultRun::checkOneShotCalls(bool oneShotEnded, int result)
{
    const auto& told = m_panel.told;
    const auto calls =
        std::count_if(told.begin(), told.end(), [](const Told& one) { return one.context == -1; });
    if (calls != (oneShotEnded ? 1 : 0)) return problem("one-shot read told at the wrong time");
    if (!oneShotEnded) return;
    if (!wasTold(result == REPLY_ACCEPTED ? ONE_SHOT_READ : ONE_SHOT_FAILED))
        problem("one-shot read told with the wrong end");
}

bool FaultRun::wasTold(const Told& expected) const
{
    return std::count(m_panel.told.begin(), m_panel.told.end(), expected) > 0;
}

bool FaultRun::isQuiet()
{
    return m_accounts.openCount() == 0 && !m_oneShotOpen && m_transfer == NO_TRANSFER &&
           !m_framePending;
}

void FaultRun::expectCacheEqualsMemory()
{
    for (const Units& units : polledUnits())
        checkShown(units);
}

void FaultRun::expectWritesAccountedFor()
{
    if (!m_accounts.isBalanced() || m_accounts.openCount() != 0) problem("accounts do not balance");
    for (const auto& written : m_accounts.writtenElements()) {
        const Element& element = written.first;
        const int held = m_plc.element(element.station, element.area, element.number);
        if (written.second.count(held) == 0)
            problem("holds a value that was not confirmed last: " + nameOf(element));
    }
}
