#ifndef SESSION_BENCH_H
#define SESSION_BENCH_H

#include "modelLine.h"
#include "modelPlc.h"
#include "plan/readPlan.h"
#include "session/driverFeeder.h"
#include "stepBound.h"

#include <functional>
#include <map>
#include <vector>

/// Notes what a session tells.
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
    void tagValue(int tag, const QByteArray& bytes, qint64 now) override;
    void tagsBad(const std::vector<int>& tags, const QString& trouble, qint64 now) override;
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

    std::function<void(int tag, const QByteArray& bytes)> onValue; ///< called with every value
    std::map<int, TagNote> tags;
    std::map<int, JobEnd> ends;
    std::vector<int> progress;
    std::vector<ExchangeNote> exchanges;
    std::map<int, int> badCounts; ///< by tag: how often it turned bad, or bad for another reason
    std::vector<EndedExchange> fences;
    int endedTwice = 0;
    int echoesFound = 0;
};

/// A session with the real driver on a virtual clock, at the other end of a line of 38400 baud from
/// a model PLC. Its link is open from the start.
class SessionBench
{
public:
    enum { ANSWER = 100000, ATTEMPTS = 3, MS = 1000, SECOND = 1000000 };

    explicit SessionBench(qint64 answer = ANSWER,
                          const LineTiming& timing = LineTiming(LineSettings()));

    /// Plans the reads of the tags and polls them; or only knows them.
    void poll(const std::vector<Tag>& tags);
    void know(const std::vector<Tag>& tags);

    /// Polls a word of that number at station 1, tag 0, and at station 2, tag 1, for a second.
    void pollTwoStations(int number);

    /// Lets so much time pass. Fails the test when the session lets none pass, see StepBound.
    void run(qint64 duration);

    /// Until it is so, `most` at most.
    /// @return whether it is
    bool runUntil(const std::function<bool()>& isSo, qint64 most = 600LL * SECOND);
    bool runUntilEnded(int job)
    {
        return runUntil([this, job] { return sink.hasEnded(job); });
    }

    void loseLink(const QString& trouble);
    void bringLinkBack();

    void writeWord(int job, int number, int value, int station = 1);

    /// Value of a tag as one number, its words in the order of their addresses; -1: never told.
    qint64 shown(int tag) const;

    /// Requests sent to a station with a function.
    int sentWith(int station, int function) const;

    /// Most writes that the driver had at a time.
    static int mostOutstanding();

    qint64 now = 0;
    ModelPlc plc;
    RecordingSink sink;
    std::vector<QByteArray> sent;   ///< requests of the driver
    std::vector<QByteArray> fences; ///< sent besides
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
