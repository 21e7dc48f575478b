#ifndef SESSION_BENCH_H
#define SESSION_BENCH_H

#include "modelLine.h"
#include "plan/readPlan.h"
#include "plcModel.h"
#include "session/driverFeeder.h"
#include "stepBound.h"

#include <functional>
#include <map>
#include <vector>

/// Records the calls of a driver feeder.
class RecordingSink : public SessionSink
{
public:
    struct TagNote
    {
        QByteArray bytes;
        QString trouble;
        bool good = false;
        int reads = 0;
        int changes = 0; ///< calls of tagValue()
    };

    struct ExchangeNote
    {
        qint64 time;
        int station;
        int result;
        int exceptionCode;
        bool isWrite;
    };

    void tagRead(int tag, const QByteArray& bytes, qint64 now) override;
    void tagShown(int tag, const QByteArray& bytes, qint64 now) override;
    void tagValue(int tag, const QByteArray& bytes, qint64 now) override;
    void tagsBad(const std::vector<int>& tags, const QString& trouble, qint64 now) override;
    void tagsUnanswered(const std::vector<int>& tags, const QString& trouble, qint64 now) override;
    void stationChanged(int station, bool answers, const QString& trouble, qint64 now) override;
    void jobEnded(const JobEnd& end) override;
    void recipeProgress(int job, int done) override;
    void exchanged(const FINISHED_EXCHANGE& finished, qint64 now) override;
    void fenced(const EndedExchange& fence, qint64 now) override;
    void echoFound() override;

    bool hasEnded(int job) const
    {
        return ends.count(job) != 0;
    }

    /// The outcome of a job; fails the test when it has not ended.
    JobEnd::Outcome outcome(int job) const;

    int changes() const;

    std::function<void(int tag, const QByteArray& bytes)> onValue; ///< called for every value
    std::function<void(int tag, const QByteArray& bytes)> onRead;  ///< called for tagRead()
    std::map<int, TagNote> tags;
    std::map<int, QByteArray> told;             ///< by tag: the value of the last tagRead()
    std::vector<std::pair<int, bool>> stations; ///< the changes of stations: whether it answers
    std::map<int, JobEnd> ends;
    std::vector<int> progress;
    std::vector<ExchangeNote> exchanges;
    std::map<int, int> badCounts; ///< by tag: how often it became bad or got another reason
    std::vector<EndedExchange> fences;
    int endedTwice = 0;
    int echoesFound = 0;
};

/// A driver feeder with the real driver, a line of 38400 baud and a model PLC, on a virtual clock.
/// The link is open from the start.
class SessionBench
{
public:
    enum { ANSWER = 100000, ATTEMPTS = 3, MS = 1000, SECOND = 1000000 };

    explicit SessionBench(qint64 answer = ANSWER,
                          const LineTiming& timing = LineTiming(LineSettings()), qint64 hold = 0);

    /// Plans the reads of the tags; poll() also polls them.
    /// @param pace  shortest time from the start of a cycle to the next start
    void poll(const std::vector<Tag>& tags, qint64 pace = 0);
    void know(const std::vector<Tag>& tags);

    /// Polls the word at stations 1 (tag 0) and 2 (tag 1) for a second.
    void pollTwoStations(int number);

    /// Lets the time pass. Fails the test when the feeder's steps let no time pass, see StepBound.
    void run(qint64 duration);

    /// Runs until the condition holds, at most for the time `most`.
    /// @return whether the condition holds
    bool runUntil(const std::function<bool()>& isSo, qint64 most = 600LL * SECOND);
    bool runUntilEnded(int job)
    {
        return runUntil([this, job] { return sink.hasEnded(job); });
    }

    void loseLink(const QString& trouble);
    void bringLinkBack();

    void writeWord(int job, int number, int value, int station = 1);

    /// The shown value of a tag as a number, with its words in the order of their addresses; -1: no
    /// value was told.
    qint64 shown(int tag) const;

    /// Number of requests with the function that were sent to the station.
    int sentWith(int station, int function) const;

    /// The largest number of writes in the driver's queue.
    static int mostOutstanding();

    qint64 now = 0;
    PlcModel plc;
    RecordingSink sink;
    std::vector<QByteArray> sent;   ///< requests of the driver
    std::vector<QByteArray> fences; ///< sent by the host itself
    std::vector<ReadBlock> blocks;

private:
    static DriverLibrary& library();
    bool stepUntil(qint64 end);

    const LineTiming m_timing;
    StartedDriver m_driver;
    bool m_linkIsUp = true;
    StepBound m_bound;

public:
    ModelLine line;
    DriverFeeder feeder;
};

Tag tagOf(const char* area, int number, Tag::Type type = Tag::UINT16, int station = 1);

ElementWrite wordWriteOf(int number, int value, int station = 1);
ElementWrite bitWriteOf(const char* area, int number, bool on, int station = 1);

#endif
