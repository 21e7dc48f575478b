#ifndef DELIVERY_LEDGER_H
#define DELIVERY_LEDGER_H

#include "plant/cursorFile.h"
#include "plant/deliveryCursor.h"
#include "plant/logPosition.h"

#include <deque>
#include <set>

/// Which rows of the history the broker surely has, and which are owed to it.
///
/// QoS 0 data in the socket at a cut is gone without notice. So a mark with QoS 1 follows the data;
/// its acknowledgement proves everything that was sent before it.
///
///     rows      ------------------|-------------|----------------|-------->  new ones
///                          cursor ^      births ^           mark ^
///               surely there      | owed: sent  | sent live      | sent live, not
///                                 | as history  |                | proven yet
///
/// A row is in one place at a time. Live rows have numbers until they are committed, then
/// sequences:
///
///   number    sent() ------> in flight --- committed --> LIVE
///             missed(), born() -> waits -- committed --> OWED
///
///   sequence  LIVE ---- proven --> the broker's
///             OWED ---- owed(), owedSent(), its device is born --> FLYING
///             OWED ---- owed(), its device is not born --> HELD
///             HELD ---- owed(), owedSent() --> FLYING
///             FLYING -- proven --> the broker's
///             LIVE, FLYING -- ended() --> OWED
///             OWED, HELD ---- the history's cap, another file --> dropped
///
/// Invariants:
/// - What is stored names each row that is OWED, HELD, LIVE or FLYING, or has it behind its top: a
///   row leaves it when a mark behind it was acknowledged, or when it was dropped.
/// - A row that a mark has proven is never owed again, not even behind a restart.
/// - The cursor is stored durably, as a whole file or not at all. One that is older than the ledger
///   names more rows, never fewer, so nobody waits for the disk; but for a file that lost rows.
/// - No sequence is guessed: a row whose commit is not known has none, and waits.
/// - Rows of a tag are handed out in the order of coming.
///
/// A cursor's file that is missing, torn or foreign says nothing: then all rows that the history
/// still has are owed.
///
/// Without a history nothing is owed: what was not sent is lost, and counted.
/// The thread of MQTT uses it.
class DeliveryLedger
{
public:
    /// What a mark proves once the broker has acknowledged it.
    struct Mark
    {
        qint64 file = 0;
        qint64 sequence = 0; ///< everything up to it, but for rows of silent stations
        qint64 time = 0;     ///< when that row was noted at the latest, ms since 1970; 0: not known
        quint64 order = 0;   ///< counts the marks of the ledger
    };

    /// A part of the log that is owed: rows of a device that is not born are held back until it is.
    using IsBorn = std::function<bool(const Sample& sample)>;

    /// @param fileName  of the cursor; it is made when it is missing
    /// @param log       null: no history is kept
    DeliveryLedger(QString fileName, SampleLog* log);

    /// The births of a session went out: rows up to `number` that are not proven are owed, those
    /// behind it go live.
    void born(quint64 number);

    /// The session ended: what was sent and not proven is owed again.
    void ended();

    /// Rows from `first` to `last` were not sent live although a session was there.
    void missed(quint64 first, quint64 last);

    /// Rows up to `number` came while no session was there: without a history they are lost.
    void cameUnsent(quint64 number);

    /// All samples up to `number` were sent live or are owed.
    void sent(quint64 number);

    /// The mark that can be published now; empty: it would prove no more than the last one.
    std::optional<Mark> nextMark();

    /// The broker acknowledged a mark of the MQTT session: the cursor moves, and is handed over to
    /// be stored.
    void proven(const Mark& mark);

    /// Whether the disk does not have the present cursor yet.
    bool isStoring() const;
    void awaitStored() const;

    /// The next rows to be sent as history, oldest first, at most `most`. They count as sent by
    /// owedSent(). Rows of devices that are not born are passed over and stay owed. It looks at so
    /// many rows at most in a call, and may return none although some are left.
    std::vector<LoggedRow> owed(int most, const IsBorn& isBorn);
    void owedSent();

    /// Rows that are owed, about; and rows that were dropped before they could be sent, since the
    /// cursor's file was made. Call behind() about once a second, also without a session: it looks
    /// where the history's file stands. Behind a loss of power the file may lack rows, and gives
    /// their sequences to new ones; a cursor that did not see it would take those for proven.
    qint64 behind();
    qint64 dropped() const;

    /// What behind() would tell if the MQTT session ended now: rows under way are among them.
    qint64 unproven();

private:
    /// A mark that waits for its acknowledgement, and what it proves.
    struct Sent
    {
        quint64 order = 0;
        qint64 top = 0;
        quint64 batches = 0; ///< of history that went out before
    };

    /// The rows of the last owed() until owedSent().
    struct Pick
    {
        RowRanges rows;
        std::map<HeldRows::Tag, qint64> held; ///< rows of tags that were held
        qint64 walkedTo = 0;                  ///< all rows up to it were looked at
        qint64 time = 0;                      ///< of the last row
    };

    struct Walk;

    void load();
    void store();
    qint64 underWay() const;
    void settle();
    bool isFileKnown() const;
    void map(const LogPosition& position, qint64 upTo);
    void rebase(const LogPosition& position);
    void takeOtherFile(const LogPosition& position, qint64 base);
    void takeSameFile(qint64 base);
    void forgetFlights();
    void dropOldest();
    void drop(qint64 first, qint64 last);
    bool isReady(const HeldRows::Tag& tag, const IsBorn& isBorn) const;
    void findReady(const IsBorn& isBorn);
    void findDevice(Walk& walk, const HeldRows::Tag& tag);
    void walk(Walk& walk);
    bool walkRows(Walk& walk, qint64 from, const std::vector<LoggedRow>& rows);
    bool walkGap(qint64 from);
    bool take(Walk& walk, const LoggedRow& row);
    void finishHeld();

    CursorFile m_file;
    SampleLog* const m_log; ///< null: no history is kept

    // As it is stored, but for LIVE and FLYING.
    DeliveryCursor m_cursor;

    // In sequences of the cursor's file.
    RowRanges m_live;                ///< sent as they came, not proven
    std::deque<RowRanges> m_flying;  ///< batches that were sent as history, not proven
    quint64 m_batches = 0;           ///< that were sent, ever
    std::set<HeldRows::Tag> m_ready; ///< held tags whose device is born: the walk takes them along
    std::set<HeldRows::Tag> m_found; ///< the same, from the next walk on
    HeldRows::Tag m_askedLast;       ///< held tags are asked for in turn
    Pick m_pick;
    qint64 m_oldest = 0;  ///< of the log, as it was seen last
    qint64 m_walkEnd = 0; ///< the last row that was looked at

    // In numbers of this run.
    bool m_isBorn = false;     ///< a session with births is there
    qint64 m_sent = 0;         ///< sent live, or waiting
    qint64 m_mapped = 0;       ///< up to here rows have sequences
    RowRanges m_waiting;       ///< will be owed
    qint64 m_firstNumber = -1; ///< of the position that was seen last; -1: none was

    qint64 m_topTime = 0;     ///< of the cursor's top
    qint64 m_historyTime = 0; ///< of the last row of history in the MQTT session
    std::deque<Sent> m_marks;
    quint64 m_orders = 0;
    Sent m_lastMark;
    qint64 m_unprovable = 0;    ///< rows in flight whose file is gone
    quint64 m_provableFrom = 0; ///< the first mark that proves those
};

#endif
