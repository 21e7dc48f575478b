#include "sparkplug/edgeBirths.h"
#include "sparkplug/edgeNodeState.h"
#include "values/jsonText.h"
#include "wire/timeUnits.h"

#include <algorithm>
#include <utility>

namespace {

enum {
    TICK = SECOND,                  ///< from figure to figure
    MARK_PAUSE = 100 * MILLISECOND, ///< from look to look whether a mark proves something new
    PROOF_LIMIT = 2 * SECOND        ///< a broker that takes longer may have nothing
};

QByteArray markText(const DeliveryLedger::Mark& mark)
{
    JsonText json;
    json.beginObject().key("sequence").integer(mark.sequence);
    json.key("time").integer(mark.time).endObject();
    return json.document();
}

} // namespace

// A session with births.

/// The first births of a session.
void EdgeNode::State::bear()
{
    const qint64 now = clock.steady();
    become(BORN, QString());
    ++sessions;
    goodAt = now + qint64(ServerWalk::GOOD_SESSION_MS) * MILLISECOND;
    tickAt = now + TICK;
    markAt = now + MARK_PAUSE;
    provenAt = now;
    isLeft = false;
    data.begin();
    ledger.born(lastNumber);
    sendBirths();
}

void EdgeNode::State::sendBirths()
{
    tellFigures();
    data.bear(node, birthSequence);
}

void EdgeNode::State::work()
{
    noteProof();
    if (session.isDrained() && std::exchange(areBirthsDue, false)) sendBirths();
    if (areBirthsDue) return;
    while (data.isWaiting() && session.isDrained())
        data.sendSome();
    if (session.isDrained()) tellOutcomes();
    if (session.isDrained()) tick();
    if (session.isDrained()) lookForMark();
    if (session.isDrained() && !data.isWaiting()) history.sendSome(clock.steady());
}

/// What happens once a second. While the socket takes nothing it comes late.
void EdgeNode::State::tick()
{
    const qint64 now = clock.steady();
    if (now >= goodAt) walk.wasGood();
    if (now < tickAt) return;
    tickAt = now + TICK;
    tellFigures();
    const std::vector<Metric> changed = node.takeNews();
    if (!changed.empty()) publisher.sendNodeData(changed);
    data.owe();
}

/// A mark follows each commit of the history and the parts of what was owed, so that little comes
/// twice behind a cut. It waits until all that the one before has proven is stored.
void EdgeNode::State::lookForMark()
{
    const qint64 now = clock.steady();
    if (now < markAt) return;
    markAt = now + MARK_PAUSE;
    if (data.isHolding()) return;
    tellSent();
    if (marks.empty() && !ledger.isStoring()) sendMark();
}

/// No row is held.
void EdgeNode::State::tellSent()
{
    ledger.sent(data.isWaiting() ? data.lastTaken() : lastNumber);
}

/// A mark proves what was sent before it.
void EdgeNode::State::sendMark()
{
    const std::optional<DeliveryLedger::Mark> mark = ledger.nextMark();
    if (!mark) return;
    const int request = session.publish({topics.mark(), markText(*mark), 1, false});
    if (request != 0) marks.emplace(request, *mark);
}

void EdgeNode::State::tellFigures()
{
    const qint64 now = clock.wall();
    node.set(NodeMetrics::DROPPED, dropped(), now);
    node.set(NodeMetrics::BEHIND, behind(), now);
    node.set(NodeMetrics::REFUSED, qint64(commands.refused()), now);
}

/// The device that is to tell an outcome; null: the node tells it.
EdgeStation* EdgeNode::State::tellerOf(const EdgeCommands::Outcome& outcome)
{
    const int device = metrics.findStation(outcome.link, outcome.station);
    if (device < 0) return nullptr;
    EdgeStation& station = metrics.devices()[size_t(device)];
    return station.takesCommands ? &station : nullptr;
}

/// A device that is not born tells its outcomes behind its birth.
void EdgeNode::State::tellOutcomes()
{
    const auto canTell = [this](const EdgeCommands::Outcome& outcome) {
        const EdgeStation* const teller = tellerOf(outcome);
        return teller == nullptr || teller->isBorn;
    };
    for (const EdgeCommands::Outcome& outcome : commands.takeOutcomes(canTell))
        tellOutcome(outcome);
}

/// No birth follows that could be waited for: the node tells what a dead device cannot.
void EdgeNode::State::tellLastOutcomes()
{
    const auto canTell = [](const EdgeCommands::Outcome&) { return true; };
    for (const EdgeCommands::Outcome& outcome : commands.takeOutcomes(canTell))
        tellOutcome(outcome);
}

void EdgeNode::State::tellOutcome(const EdgeCommands::Outcome& outcome)
{
    const qint64 now = clock.wall();
    EdgeStation* const teller = tellerOf(outcome);
    if (teller == nullptr || !teller->isBorn) {
        node.tell(NodeMetrics::OUTCOME, outcome.text, now);
        return publisher.sendNodeData(node.takeNews());
    }
    teller->outcome = outcome.text;
    teller->outcomeTime = now;
    publisher.sendDevice("DDATA", teller->id,
                         {dataEntry(teller->outcomeAlias, MetricType::STRING, outcome.text,
                                    QualityCode::GOOD, now)});
}

// The end of a session with births.

/// Of a stop, what waits goes out first, with its mark: outcomes ahead of the deaths of devices,
/// whose links have ended. A primary host that is offline would not see it: that stays owed.
void EdgeNode::State::sayFarewell()
{
    isLeft = news.host == HostState::OFFLINE;
    if (!isLeft && !areBirthsDue) {
        if (session.isDrained()) tellLastOutcomes();
        while (data.isWaiting() && session.isDrained())
            data.sendSome();
        data.owe();
        tellSent();
        sendMark();
    }
    data.end();
    news.isDeathDelivered = false;
    deathRequest = publisher.sendNodeDeath(birthSequence);
    deadline = clock.steady() + FAREWELL_LIMIT;
    become(LEAVING, QString());
}

void EdgeNode::State::part()
{
    session.leave();
    over(QLatin1String("the primary host is offline"), true, isLeft);
}

// Samples.

void EdgeNode::State::take(const Sample& sample)
{
    const quint64 before = lastNumber;
    lastNumber = std::max(lastNumber, sample.number);
    if (step != BORN) ledger.cameUnsent(lastNumber);
    if (sample.kind != Sample::GAP) return step == BORN ? data.push(sample) : data.lookOn(sample);
    if (step == BORN && lastNumber > before) ledger.missed(before + 1, lastNumber);
}

qint64 EdgeNode::State::dropped() const
{
    return ledger.dropped() + data.lost() + history.lost();
}

/// When the broker had everything for sure, or acknowledged a part of it.
void EdgeNode::State::noteProof()
{
    if (marks.empty() && session.isDrained()) provenAt = clock.steady();
}

/// What is under way counts only when it takes long: else the figure would jump with each commit.
qint64 EdgeNode::State::behind() const
{
    const bool isLate = step == BORN && clock.steady() - provenAt > PROOF_LIMIT;
    return isLate ? ledger.unproven() : ledger.behind();
}
