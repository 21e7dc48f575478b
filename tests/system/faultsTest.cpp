// Every kind of fault that the simulated PLC has, while a user writes all the time.

#include "pollingHost.h"
#include "simulatorProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

namespace {

enum {
    FAULTY_EXCHANGES = 2000,
    LEAST_FAULTS = 150, // of 200 that are due
    ANSWER_MS = 20,
    ATTEMPTS = 2, // so that requests are given up as well, some twenty times
    SEQUENCE_BITS = 11,
    SEQUENCE_MASK = (1 << SEQUENCE_BITS) - 1
};

// The line itself takes no time, so the host need not reckon with any but the silent interval.
const int BAUD = 1000000;

const char* const DELAY_MS = "25"; // later than the time-out, and within the next one

const std::vector<std::string> WRITTEN = {
    "MW100", "MW102", "MW400",  "QW40",   "QW42",   "2:MW100", "2:MW102", "2:MW500", "2:QW60",
    "QX4.0", "QX4.3", "MX20.1", "MX20.2", "MX31.7", "2:QX4.0", "2:QX5.7", "2:MX20.0"};

const std::vector<std::string> STANDING = {"IW20",   "IW22",   "IX30.0",   "IX31.1",
                                           "2:IW24", "2:IW26", "2:IX30.2", "MW300"};

const std::vector<std::string> MOVING = {"IW0", "IX8.0", "2:IW0", "2:IX8.1"};

std::string hex(const QByteArray& bytes)
{
    return bytes.toHex(' ').toStdString();
}

/// Toggles with a period of a day stand for what a PLC's program has set.
std::vector<std::string> signalArguments()
{
    std::vector<std::string> arguments;
    for (const char* signal :
         {"1:IW:10:toggle:86400000:4711", "1:IW:11:toggle:86400000:815",
          "1:IX:240:toggle:86400000:1", "1:IX:249:toggle:86400000:1",
          "2:IW:12:toggle:86400000:1234", "2:IW:13:toggle:86400000:4321",
          "2:IX:242:toggle:86400000:1", "1:IW:0:ramp:2000:1000", "1:IX:64:toggle:500:1",
          "2:IW:0:counter:50:65535", "2:IX:65:toggle:700:1"})
        arguments.insert(arguments.end(), {"--signal", signal});
    return arguments;
}

std::vector<std::string> arguments(const std::string& kind)
{
    const std::string value = kind == "silent" ? "1:0.1,2:0.1" : "0.1";
    std::vector<std::string> all = {
        "--station",  "1,2",    "--fault-exchanges", std::to_string(FAULTY_EXCHANGES),
        "--delay-ms", DELAY_MS, "--" + kind,         value};
    const std::vector<std::string> moving = signalArguments();
    all.insert(all.end(), moving.begin(), moving.end());
    return all;
}

std::vector<Tag> allTags()
{
    std::vector<std::string> all = WRITTEN;
    all.insert(all.end(), STANDING.begin(), STANDING.end());
    all.insert(all.end(), MOVING.begin(), MOVING.end());
    return tagsFrom(all);
}

/// Writes to every element of WRITTEN again and again, with values that tell the element.
class Writer
{
public:
    Writer(PollingHost& host, const std::vector<Tag>& tags) : m_host(host), m_tags(tags) {}

    /// To one element after the other whose tag is good, until enough is under way.
    void writeMore()
    {
        const std::vector<TagState> states = m_host.states();
        for (size_t tried = 0; tried < WRITTEN.size(); ++tried) {
            if (m_host.ledger.open() >= MOST_OPEN) return;
            m_element = (m_element + 1) % WRITTEN.size();
            if (states[m_element].good) writeTo(m_element);
        }
    }

    /// A word that was written, or never.
    static bool isOf(size_t element, const QByteArray& bytes)
    {
        const int word =
            static_cast<unsigned char>(bytes.at(0)) + 256 * static_cast<unsigned char>(bytes.at(1));
        return word == 0 || size_t(word >> SEQUENCE_BITS) == element + 1;
    }

private:
    enum { MOST_OPEN = 12, PAIR_EVERY = 5, TWICE_EVERY = 7 };

    ElementWrite next(size_t element)
    {
        const Tag& tag = m_tags[element];
        const int sequence = m_sequence & SEQUENCE_MASK;
        return elementOf(tag, tag.isBit() ? m_sequence & 1
                                          : int(element + 1) << SEQUENCE_BITS | sequence);
    }

    void writeTo(size_t element)
    {
        ++m_sequence;
        std::vector<ElementWrite> elements = {next(element)};
        if (m_sequence % PAIR_EVERY == 0) elements.push_back(next((element + 1) % WRITTEN.size()));
        m_host.write(elements);
        if (m_sequence % TWICE_EVERY == 0) writeTo(element);
    }

    PollingHost& m_host;
    const std::vector<Tag>& m_tags;
    size_t m_element = 0;
    int m_sequence = 0;
};

/// What is shown in the meantime is old, never another element's.
void expectNoStrangeValues(PollingHost& host, const std::vector<Tag>& tags)
{
    for (const News::Change& change : host.changes) {
        const size_t tag = size_t(change.tag);
        if (tag >= WRITTEN.size() || tags[tag].isBit() || change.state.bytes.isEmpty()) continue;
        ASSERT_TRUE(Writer::isOf(tag, change.state.bytes))
            << WRITTEN[tag] << " showed " << hex(change.state.bytes);
    }
    host.changes.clear();
}

bool faultsAreOver(const PollingHost& host)
{
    const LinkFigures figures = host.figures();
    return figures.exchanges + figures.retries > FAULTY_EXCHANGES;
}

void expectSameAsMemory(const std::vector<Tag>& tags, const std::vector<TagState>& states,
                        const SimulatorProcess& plc)
{
    for (size_t tag = 0; tag < WRITTEN.size() + STANDING.size(); ++tag)
        EXPECT_EQ(hex(plc.bytesOf(tags[tag])), hex(states[tag].bytes))
            << tags[tag].name.toStdString();
}

void expectWritesAccountedFor(const std::vector<Tag>& tags, const WriteLedger& ledger,
                              const SimulatorProcess& plc)
{
    EXPECT_EQ(0, ledger.open());
    EXPECT_EQ(0, ledger.surplusEnds());
    EXPECT_GT(ledger.count(JobEnd::DONE), 100);
    for (size_t tag = 0; tag < WRITTEN.size(); ++tag) {
        const auto possible =
            ledger.possibleValues(tags[tag].station, tags[tag].area, tags[tag].number);
        EXPECT_EQ(1u, possible.count(plc.bytesOf(tags[tag])))
            << WRITTEN[tag] << " holds " << hex(plc.bytesOf(tags[tag]))
            << ", confirmed was another value";
    }
}

struct FaultCase
{
    const char* kind;
    bool network;
    JobEnd::Outcome seen; ///< what some of the writes end as
};

void PrintTo(const FaultCase& faulty, std::ostream* out)
{
    *out << faulty.kind << (faulty.network ? " over TCP" : "");
}

LineTiming timingOf(const FaultCase& faulty)
{
    if (faulty.network) return LineTiming::network();
    LineSettings line;
    line.baud = BAUD;
    return LineTiming(line);
}

class Faults : public testing::TestWithParam<FaultCase>
{
};

} // namespace

TEST_P(Faults, LeaveEveryTagRightAndEveryWriteAccountedFor)
{
    std::vector<std::string> options = arguments(GetParam().kind);
    if (GetParam().network) options.insert(options.end(), {"--tcp", "0"});
    SimulatorProcess plc(options);
    const std::vector<Tag> tags = allTags();
    std::vector<TagState> states;
    WriteLedger ledger;
    {
        LinkThread::Settings settings = PollingHost::settings(plc.opener(), ANSWER_MS, ATTEMPTS);
        settings.timing = timingOf(GetParam());
        PollingHost host(settings, tags);
        Writer writer(host, tags);
        ASSERT_TRUE(host.await([&] {
            writer.writeMore();
            expectNoStrangeValues(host, tags);
            return HasFatalFailure() || faultsAreOver(host);
        }));
        ASSERT_TRUE(host.await([&] { return host.ledger.open() == 0; }))
            << host.ledger.open() << " writes without an end";
        const qint64 written = host.now();
        ASSERT_TRUE(host.await([&] { return host.allReadSince(written); })) << host.badTags();
        expectNoStrangeValues(host, tags);
        EXPECT_EQ(1u, host.linkEvents.size()) << "the link was taken for lost";
        states = host.states();
        ledger = host.ledger;
    }
    plc.end();
    std::string counted = GetParam().kind;
    std::replace(counted.begin(), counted.end(), '-', '_');
    EXPECT_GE(plc.reported(counted), LEAST_FAULTS);
    expectSameAsMemory(tags, states, plc);
    expectWritesAccountedFor(tags, ledger, plc);
    EXPECT_GT(ledger.count(GetParam().seen), 0);
}

INSTANTIATE_TEST_SUITE_P(EachKind, Faults,
                         testing::Values(FaultCase{"drop", false, JobEnd::TIMED_OUT},
                                         FaultCase{"drop-request", false, JobEnd::TIMED_OUT},
                                         FaultCase{"corrupt", false, JobEnd::TIMED_OUT},
                                         FaultCase{"truncate", false, JobEnd::TIMED_OUT},
                                         FaultCase{"duplicate", false, JobEnd::DONE},
                                         FaultCase{"delay", false, JobEnd::DONE},
                                         FaultCase{"stray-before", false, JobEnd::DONE},
                                         FaultCase{"stray-after", false, JobEnd::DONE},
                                         FaultCase{"wrong-station", false, JobEnd::TIMED_OUT},
                                         FaultCase{"exception", false, JobEnd::REFUSED},
                                         FaultCase{"silent", false, JobEnd::TIMED_OUT},
                                         FaultCase{"drop", true, JobEnd::TIMED_OUT},
                                         FaultCase{"drop-request", true, JobEnd::TIMED_OUT},
                                         FaultCase{"corrupt", true, JobEnd::TIMED_OUT},
                                         FaultCase{"truncate", true, JobEnd::TIMED_OUT},
                                         FaultCase{"duplicate", true, JobEnd::DONE},
                                         FaultCase{"delay", true, JobEnd::DONE},
                                         FaultCase{"stray-before", true, JobEnd::DONE},
                                         FaultCase{"stray-after", true, JobEnd::DONE},
                                         FaultCase{"wrong-station", true, JobEnd::TIMED_OUT},
                                         FaultCase{"exception", true, JobEnd::REFUSED},
                                         FaultCase{"silent", true, JobEnd::TIMED_OUT}),
                         [](const testing::TestParamInfo<FaultCase>& named) {
                             std::string name = named.param.kind;
                             name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
                             return name + (named.param.network ? "OverTcp" : "");
                         });
