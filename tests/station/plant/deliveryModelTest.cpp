// Random rows, commits, births, cuts, marks, restarts, losses of power, changes of the file, drops
// of the cap and reads that fail: what a subscriber ends with, beside what the log has.
#include "listedLog.h"

#include "plant/deliveryLedger.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <optional>
#include <random>

namespace {

enum { RUNS = 15, STEPS = 400, DEVICES = 3, TAGS = 2, MOST_OWED = 7 };

/// A row, and what became of it. Its index is its value.
struct Fate
{
    int device = 0, tag = 0;
    quint64 number = 0;
    bool isCommitted = false;
    bool isGone = false; ///< the log no longer has it
    bool isProven = false;
    int received = 0;
};

/// What went out in a session, in its order.
struct Outgoing
{
    enum Kind { LIVE, HISTORY, MARK };

    Kind kind = LIVE;
    int row = 0;
    DeliveryLedger::Mark mark;
    std::vector<int> proves; ///< rows that a mark proves
    bool isAcknowledged = false;
};

/// The cursor's file ahead of an acknowledgement, and which rows were proven by then.
struct Stored
{
    QByteArray content;
    std::vector<bool> isProven; ///< by row
};

class Plant
{
public:
    explicit Plant(unsigned seed) : m_random(seed), m_losesFiles(seed % 2 == 0)
    {
        start();
    }

    void step();
    void finish();
    void check() const;

private:
    int upTo(int most)
    {
        return std::uniform_int_distribution<int>(0, most)(m_random);
    }

    bool isBorn(const Sample& sample) const
    {
        return m_isDeviceBorn[fate(sample).device];
    }
    const Fate& fate(const Sample& sample) const
    {
        return m_fates[size_t(sample.value)];
    }
    Fate& fate(const Sample& sample)
    {
        return m_fates[size_t(sample.value)];
    }

    QString cursorName() const
    {
        return m_folder.filePath(QLatin1String("cursor"));
    }

    void start();
    void note();
    void commit();
    void take();
    void send(Outgoing::Kind kind, int row);
    void tellSent();
    void sendHistory();
    void sendMark();
    void acknowledge();
    void bear();
    void cut();
    void noteStored();
    void bringBackOlder();
    void kill(size_t lostRows);
    void changeFile();
    void drop();

    std::mt19937 m_random;
    const bool m_losesFiles;
    QTemporaryDir m_folder;
    ListedLog m_log;
    std::unique_ptr<DeliveryLedger> m_ledger;
    std::optional<Stored> m_older; ///< of this run
    std::vector<Fate> m_fates;
    std::vector<Sample> m_queue; ///< noted, not taken
    std::vector<int> m_uncommitted;
    quint64 m_lastTaken = 0, m_told = 0; ///< the second: to the ledger
    bool m_isSession = false;
    bool m_isDeviceBorn[DEVICES] = {};
    std::vector<Outgoing> m_out;
    size_t m_mustArrive = 0;                          ///< what stands before an acknowledged mark
    std::map<std::pair<int, int>, int> m_lastHistory; ///< of the session, by metric
};

void Plant::start()
{
    m_ledger = std::make_unique<DeliveryLedger>(cursorName(), &m_log);
    m_lastTaken = m_told = 0;
}

void Plant::note()
{
    Sample sample;
    Fate fate;
    fate.device = upTo(DEVICES - 1);
    fate.tag = upTo(TAGS - 1);
    sample.link = QLatin1String("plc");
    sample.tag = QString::number(fate.device * TAGS + fate.tag);
    sample.value = double(m_fates.size());
    sample.number = fate.number = m_log.note(sample);
    m_uncommitted.push_back(int(m_fates.size()));
    m_fates.push_back(fate);
    m_queue.push_back(sample);
}

void Plant::commit()
{
    m_log.commit();
    for (const int row : m_uncommitted)
        m_fates[size_t(row)].isCommitted = true;
    m_uncommitted.clear();
    m_ledger->behind();
}

/// As the edge node does it: live, or missed.
void Plant::take()
{
    std::vector<Sample> some(m_queue.begin(), m_queue.begin() + upTo(int(m_queue.size())));
    m_queue.erase(m_queue.begin(), m_queue.begin() + std::ptrdiff_t(some.size()));
    for (const Sample& sample : some) {
        m_lastTaken = sample.number;
        if (!m_isSession) continue;
        if (isBorn(sample))
            send(Outgoing::LIVE, int(sample.value));
        else {
            m_ledger->missed(sample.number, sample.number);
        }
    }
    if (m_isSession && upTo(2) == 0) tellSent();
}

/// Nothing that is proven goes out again, and history is in order.
void Plant::send(Outgoing::Kind kind, int row)
{
    const Fate& fate = m_fates[size_t(row)];
    ASSERT_FALSE(fate.isProven) << "row " << row;
    if (kind == Outgoing::HISTORY) {
        const auto last = m_lastHistory.emplace(std::pair<int, int>(fate.device, fate.tag), -1);
        ASSERT_LT(last.first->second, row);
        last.first->second = row;
    }
    Outgoing out;
    out.kind = kind;
    out.row = row;
    m_out.push_back(out);
}

void Plant::sendHistory()
{
    const std::vector<LoggedRow> rows =
        m_ledger->owed(1 + upTo(MOST_OWED), [this](const Sample& sample) {
            return m_isDeviceBorn[sample.tag.toInt() / TAGS];
        });
    if (rows.empty() || upTo(10) == 0) return; // the socket took nothing
    for (const LoggedRow& row : rows) {
        ASSERT_TRUE(isBorn(row.sample));
        ASSERT_TRUE(m_isSession);
        send(Outgoing::HISTORY, int(row.sample.value));
    }
    m_ledger->owedSent();
}

void Plant::sendMark()
{
    if (upTo(1) != 0 && m_isSession) tellSent();
    const auto mark = m_ledger->nextMark();
    if (!mark) return;
    ASSERT_TRUE(m_isSession);
    Outgoing out;
    out.kind = Outgoing::MARK;
    out.mark = *mark;
    for (const Outgoing& before : m_out) {
        const Fate& fate = m_fates[size_t(before.row)];
        const bool isCovered = before.kind == Outgoing::HISTORY ||
                               fate.number <= std::min(m_told, m_log.position().number);
        if (before.kind != Outgoing::MARK && isCovered) out.proves.push_back(before.row);
    }
    m_out.push_back(out);
}

/// The oldest mark without an acknowledgement. All that stands before it has arrived.
void Plant::acknowledge()
{
    for (size_t i = 0; i < m_out.size(); ++i) {
        if (m_out[i].kind != Outgoing::MARK || m_out[i].isAcknowledged) continue;
        m_out[i].isAcknowledged = true;
        m_mustArrive = i;
        noteStored();
        for (const int row : m_out[i].proves)
            m_fates[size_t(row)].isProven = true;
        return m_ledger->proven(m_out[i].mark);
    }
}

void Plant::bear()
{
    for (bool& isDeviceBorn : m_isDeviceBorn)
        isDeviceBorn = upTo(2) != 0;
    if (m_isSession) return;
    m_isSession = true;
    m_lastHistory.clear();
    m_ledger->born(m_lastTaken);
    m_told = m_lastTaken;
}

void Plant::tellSent()
{
    m_ledger->sent(m_lastTaken);
    m_told = m_lastTaken;
}

/// A part of what no acknowledged mark covers arrived.
void Plant::cut()
{
    if (!m_isSession) return;
    const size_t arrived = m_mustArrive + size_t(upTo(int(m_out.size() - m_mustArrive)));
    for (size_t i = 0; i < arrived; ++i) {
        if (m_out[i].kind != Outgoing::MARK) ++m_fates[size_t(m_out[i].row)].received;
    }
    m_out.clear();
    m_mustArrive = 0;
    m_isSession = false;
}

void Plant::noteStored()
{
    m_ledger->awaitStored();
    Stored stored;
    QFile file(cursorName());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    stored.content = file.readAll();
    for (const Fate& fate : m_fates)
        stored.isProven.push_back(fate.isProven);
    m_older = stored;
}

/// The disk was slow: what the last acknowledgement proved never came there.
void Plant::bringBackOlder()
{
    QFile file(cursorName());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(m_older->content);
    for (size_t i = 0; i < m_fates.size(); ++i)
        m_fates[i].isProven = i < m_older->isProven.size() && m_older->isProven[i];
}

void Plant::kill(size_t lostRows)
{
    cut();
    m_ledger.reset();
    if (m_older && upTo(1) == 0) bringBackOlder();
    m_older.reset();
    for (const int row : m_uncommitted)
        m_fates[size_t(row)].isGone = true;
    m_uncommitted.clear();
    m_queue.clear();
    m_log.restart();
    for (const Sample& sample : m_log.loseNewest(lostRows))
        fate(sample).isGone = true;
    start();
}

void Plant::changeFile()
{
    for (const LoggedRow& row : m_log.all())
        fate(row.sample).isGone = true;
    m_log.changeFile();
}

/// Of the oldest rows some go, not all before the newest that goes.
void Plant::drop()
{
    for (int i = upTo(4); i > 0 && !m_log.all().empty(); --i) {
        const size_t most = std::min<size_t>(m_log.all().size() - 1, 5);
        fate(m_log.drop(size_t(upTo(int(most))))).isGone = true;
    }
}

void Plant::step()
{
    const int what = upTo(99);
    if (what < 30)
        note();
    else if (what < 40)
        commit();
    else if (what < 55)
        take();
    else if (what < 70)
        sendHistory();
    else if (what < 80)
        sendMark();
    else if (what < 86)
        acknowledge();
    else if (what < 92)
        bear();
    else if (what < 94) {
        cut();
        m_ledger->ended();
    } else if (what < 96)
        kill(m_losesFiles && upTo(2) == 0 ? size_t(upTo(5)) : 0);
    else if (what < 97)
        m_losesFiles&& upTo(1) == 0 ? changeFile() : drop();
    else
        m_log.failures = upTo(2);
}

/// All is well for a while.
void Plant::finish()
{
    cut();
    m_ledger->ended();
    m_log.failures = 0;
    note(); // so that rows follow those that are gone
    commit();
    while (!m_queue.empty())
        take();
    m_isSession = true;
    m_lastHistory.clear();
    std::fill(std::begin(m_isDeviceBorn), std::end(m_isDeviceBorn), true);
    m_ledger->born(m_lastTaken);
    for (int i = 0; i < 10000 && (i < 100 || m_ledger->behind() > 0); ++i)
        sendHistory();
    sendMark();
    acknowledge();
    EXPECT_EQ(0, m_ledger->behind());
    m_mustArrive = m_out.size();
    cut();
}

void Plant::check() const
{
    qint64 neverReceived = 0, unproven = 0;
    for (size_t i = 0; i < m_fates.size(); ++i) {
        const Fate& fate = m_fates[i];
        if (fate.isGone && fate.isCommitted && !fate.isProven) ++unproven;
        if (fate.received > 0 || !fate.isCommitted) continue;
        if (fate.isGone)
            ++neverReceived;
        else
            ADD_FAILURE() << "row " << i << " never arrived";
    }
    if (m_losesFiles) return; // how many rows a lost file had is known about
    EXPECT_LE(neverReceived, m_ledger->dropped());
    EXPECT_GE(unproven, m_ledger->dropped());
}

} // namespace

TEST(DeliveryModel, IsWhatTheSubscriberEndsWith)
{
    std::random_device seeds;
    for (int i = 0; i < RUNS; ++i) {
        const unsigned seed = seeds();
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Plant plant(seed);
        for (int step = 0; step < STEPS && !testing::Test::HasFailure(); ++step)
            plant.step();
        plant.finish();
        plant.check();
        if (testing::Test::HasFailure()) return;
    }
}
