#ifndef SAMPLE_QUEUE_H
#define SAMPLE_QUEUE_H

#include "samples/rowListener.h"
#include "values/linkValues.h"

#include <QHash>
#include <QPair>

#include <deque>
#include <map>

/// News for programs outside, in the order in which it came. Links' threads and the history's
/// thread put it in; one thread takes it.
///
/// While the queue is full, the newest sample of each tag and station takes the place of the one
/// before it, so that what is taken still ends with how everything stands:
///
///     noted   1 2 3 | full: 4(a) 5(b) 6(a) 7(a) 8(c)   taken
///     taken   1 2 3   GAP(4) 5(b) GAP(6) 7(a) 8(c)
///
/// Invariants:
/// - Each number of a row is that of one READING that is taken, or lies behind the number taken
///   before and not behind that of a GAP.
/// - It holds `most` samples and one for each tag and station, never more.
/// - Who puts a sample in waits for a few moves of pointers at most, never for who takes.
class SampleQueue : public RowListener, public ValueListener
{
public:
    enum { MOST_SAMPLES = 200000 };

    /// Called when the first sample lies in an empty queue, by the thread that put it there, while
    /// locks are held: it must do no more than wake the thread that takes.
    using Wake = std::function<void()>;

    explicit SampleQueue(Wake wake, size_t most = MOST_SAMPLES);

    /// All that waits.
    std::vector<Sample> take();

    void rowNoted(const Sample& reading) override;

    /// Rows come from the intake.
    void tagChanged(const LinkValues&, int, const TagReading&) override {}

    /// A sample for each station whose answers changed. A station is silent until it is told.
    void standingChanged(const LinkValues& link, const LinkState& state) override;

private:
    using Key = QPair<QString, QString>; ///< of a tag: link and name; of a station: link, number

    /// The newest samples of a time in which the queue was full.
    struct Late
    {
        std::map<quint64, Sample> samples; ///< by the order of coming
        QHash<Key, quint64> ofTag, ofStation;
        quint64 count = 0;       ///< that came
        quint64 firstNumber = 0; ///< of the first row that came; 0: none
        quint64 lastNumber = 0;
    };

    void put(const Sample& sample);
    static void putLate(Late& late, const Sample& sample);
    static void appendLate(std::vector<Sample>& taken, Late& late);

    const Wake m_wake;
    const size_t m_most;

    std::mutex m_mutex; ///< guards all members below
    std::deque<Sample> m_samples;
    Late m_late;
    QHash<Key, bool> m_answers; ///< of the stations, as they were told last
};

#endif
