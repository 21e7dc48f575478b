#ifndef EDGE_BENCH_H
#define EDGE_BENCH_H

#include "sparkplug/edgeNode.h"

#include "broker/recordedSession.h"
#include "plant/recordedCommands.h"
#include "receivedPayload.h"
#include "values/testClock.h"

#include <QTemporaryDir>

#include <map>

/// One thing that the node asked of its session.
struct Told
{
    enum What { CONNECT, SUBSCRIBE, PUBLISH, LEAVE, DROP };

    What what = PUBLISH;
    int session = 0;       ///< counts the CONNECTs from 1
    qint64 wall = 0;       ///< the clock at that moment
    BrokerMessage message; ///< the will of CONNECT
    QStringList topics;    ///< of SUBSCRIBE
    QString kind, device;  ///< levels of the topic below spBv1.0/
    ReceivedPayload payload;
    bool isAccepted = false, isGranted = false; ///< the broker had said so
    bool isAlone = true;                        ///< CONNECT: no other session was there
    BrokerAddress server;

    bool is(const char* which) const
    {
        return what == PUBLISH && kind == QLatin1String(which);
    }
    bool isBirth() const
    {
        return is("NBIRTH") || is("DBIRTH");
    }
    bool isData() const
    {
        return is("NDATA") || is("DDATA");
    }
};

/// A recorded session that keeps the order of everything, over all sessions.
class ToldSession : public RecordedSession
{
public:
    explicit ToldSession(const StationClock& clock) : m_clock(clock) {}

    std::vector<Told> told;
    bool isGranted = false;

    void connect(const BrokerAddress& address, const BrokerMessage& last) override;
    int subscribe(const QStringList& topics) override;
    int publish(const BrokerMessage& message) override;
    void leave() override;
    void drop() override;

private:
    void note(Told::What what, const BrokerMessage& message, const QStringList& topics = {});

    const StationClock& m_clock;
};

/// A counter in memory.
class MemorySequence : public BirthSequence
{
public:
    std::optional<quint8> last;
    bool isBroken = false;
    int given = 0, back = 0;

    std::optional<quint8> take() override
    {
        if (isBroken) return std::nullopt;
        ++given;
        before = last;
        last = last ? quint8(*last + 1u) : quint8(0);
        return last;
    }
    void giveBack() override
    {
        ++back;
        last = before;
    }

private:
    std::optional<quint8> before;
};

/// The rows of a history in memory.
class MemoryLog : public SampleLog
{
public:
    std::vector<Sample> rows; ///< row i has the sequence i + 1
    quint64 committed = 0;    ///< rows
    mutable int looks = 0;    ///< calls of position()

    LogPosition position() const override
    {
        ++looks;
        return {committed == 0 ? 0 : 77, qint64(committed), committed, 0};
    }
    std::vector<LoggedRow> rowsBehind(qint64 sequence, qint64 last, int most) override;
    qint64 oldestSequence() override
    {
        return 1;
    }
};

/// An edge node with its broker, its links and its clock in the hands of a test.
class EdgeBench
{
public:
    struct Setup
    {
        int servers = 1;
        const char* primaryHost = "";
        bool takesCommands = true;
        bool keepsHistory = false;
    };

    explicit EdgeBench(const Setup& setup);
    EdgeBench() : EdgeBench(Setup()) {}

    TestClock clock;
    ToldSession session{clock};
    MemorySequence sequence;
    RecordedCommands commands;
    MemoryLog log;

private:
    QTemporaryDir m_folder;

public:
    DeliveryLedger ledger;
    EdgeNode node;
    std::map<std::pair<QString, QString>, Sample> present; ///< the last reading by link and tag

    // The broker.
    void accept();
    void grant(bool isGranted = true);
    void cut(bool connectSent = true);
    void state(bool isOnline, qint64 time);
    void command(const char* kind, const QString& device, const QByteArray& payload,
                 bool isRetained = false);
    void acknowledge();

    /// CONNECT, SUBSCRIBE and births, without a primary host.
    void beBorn();

    // The links.
    Sample reading(const char* link, const char* tag, double value, Quality quality = GOOD);
    Sample standing(const char* link, int station, bool answers);
    void take(const std::vector<Sample>& samples);
    void read(const char* link, const char* tag, double value, Quality quality = GOOD);
    void stand(const char* link, int station, bool answers);
    void commitRows();

    void passMs(qint64 ms);
    qint64 turn();

    // What was published.
    std::vector<Told> since(size_t first) const;
    std::vector<Told> all(const char* kind) const;
    size_t mark() const
    {
        return session.told.size();
    }

private:
    quint64 m_lastNumber = 0;
};

Tag tagOf(const char* name, int station, Tag::Type type, Tag::Access access = Tag::READ_ONLY);

/// Two links: "oven" with the stations 1 and 2, "mill" with station 1.
///     oven 1   temperature float32 rw, door bool, count uint16 rw
///     oven 2   level int16 rw
///     mill 1   speed int32 rw, power uint32
std::vector<EdgeDevice> plantDevices();

/// A command with one metric, written by the rules of the encoding. Alias 0: none; empty: no name.
QByteArray commandBytes(const char* name, quint64 alias, int field, quint64 bits, quint64 type = 0);
QByteArray rebirthBytes(bool isWanted = true);

#endif
