#include "samples/sampleQueue.h"

#include <iterator>
#include <utility>

SampleQueue::SampleQueue(Wake wake, size_t most) : m_wake(std::move(wake)), m_most(most) {}

void SampleQueue::rowNoted(const Sample& reading)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    put(reading);
}

void SampleQueue::standingChanged(const LinkValues& link, const LinkState& state)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const StationStanding& standing : state.stations) {
        bool& answers = m_answers[Key(link.name(), QString::number(standing.station))];
        if (answers == standing.answers) continue;
        answers = standing.answers;
        Sample sample;
        sample.kind = Sample::STANDING;
        sample.link = link.name();
        sample.time = standing.since;
        sample.station = standing.station;
        sample.answers = standing.answers;
        put(sample);
    }
}

/// With the lock held. Once the queue was full, all that comes is late until everything is taken:
/// the order stays.
void SampleQueue::put(const Sample& sample)
{
    const bool isFirst = m_samples.empty() && m_late.samples.empty();
    if (m_late.samples.empty() && m_samples.size() < m_most)
        m_samples.push_back(sample);
    else
        putLate(m_late, sample);
    if (isFirst) m_wake();
}

void SampleQueue::putLate(Late& late, const Sample& sample)
{
    const bool isReading = sample.kind == Sample::READING;
    const Key key(sample.link, isReading ? sample.tag : QString::number(sample.station));
    QHash<Key, quint64>& newest = isReading ? late.ofTag : late.ofStation;
    const auto before = newest.constFind(key);
    if (before != newest.constEnd()) late.samples.erase(*before);
    newest[key] = ++late.count;
    late.samples[late.count] = sample;
    if (sample.number == 0) return;
    if (late.firstNumber == 0) late.firstNumber = sample.number;
    late.lastNumber = sample.number;
}

/// Rows whose samples were replaced lie in gaps.
void SampleQueue::appendLate(std::vector<Sample>& taken, Late& late)
{
    Sample gap;
    gap.kind = Sample::GAP;
    quint64 next = late.firstNumber;
    for (auto& entry : late.samples) {
        Sample& sample = entry.second;
        if (sample.number > next) {
            gap.number = sample.number - 1;
            taken.push_back(gap);
        }
        if (sample.number != 0) next = sample.number + 1;
        taken.push_back(std::move(sample));
    }
    if (next == 0 || next > late.lastNumber) return;
    gap.number = late.lastNumber;
    taken.push_back(gap);
}

/// The samples are moved without the lock: nobody waits for a long queue.
std::vector<Sample> SampleQueue::take()
{
    std::deque<Sample> samples;
    Late late;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::swap(samples, m_samples);
        std::swap(late, m_late);
    }
    std::vector<Sample> taken(std::make_move_iterator(samples.begin()),
                              std::make_move_iterator(samples.end()));
    appendLate(taken, late);
    return taken;
}
