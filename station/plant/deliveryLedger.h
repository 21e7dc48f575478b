#ifndef DELIVERY_LEDGER_H
#define DELIVERY_LEDGER_H

#include "plant/logPosition.h"

#include <functional>
#include <optional>

/// Which rows of the history the broker surely has, and which are owed to it.
///
/// QoS 0 data in the socket at a cut is gone without notice. So a mark with QoS 1 follows the data
/// once a second; its acknowledgement proves everything that was sent before it.
///
///     rows      ------------------|-------------|----------------|-------->  new ones
///                          cursor ^      births ^           mark ^
///               surely there      | owed: sent  | sent live      | sent live, not
///                                 | as history  |                | proven yet
///
/// Invariants:
/// - The cursor never passes a row that was not sent on a session whose later mark was
///   acknowledged, was not dropped, and is still owed.
/// - A row that a mark has proven is never owed again, not even behind a restart.
/// - The cursor is stored durably, as a whole file or not at all.
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
        qint64 sequence = 0; ///< everything up to it
        qint64 time = 0;     ///< when that row was noted at the latest, ms since 1970
    };

    /// A part of the log that is owed: rows of a device that is not born are held back until it is.
    using IsBorn = std::function<bool(const Sample& sample)>;

    /// @param fileName  of the cursor; it is made when it is missing
    /// @param log       null: no history is kept
    DeliveryLedger(QString fileName, SampleLog* log);

    /// The births went out: rows up to `number` that are not proven are owed, those behind it go
    /// live.
    void born(quint64 number);

    /// The session ended: what was sent and not proven is owed again.
    void ended();

    /// Rows from `first` to `last` were not sent live although a session was there.
    void missed(quint64 first, quint64 last);

    /// All samples up to `number` were sent live or are owed.
    void sent(quint64 number);

    /// The mark that can be published now; empty: it would prove no more than the last one.
    std::optional<Mark> nextMark();

    /// The broker acknowledged a mark of this session: the cursor moves and is stored.
    void proven(const Mark& mark);

    /// The next rows to be sent as history, oldest first, at most `most`. They count as sent by
    /// owedSent(). Rows of devices that are not born are passed over and stay owed.
    std::vector<LoggedRow> owed(int most, const IsBorn& isBorn);
    void owedSent();

    /// Rows that are owed, about; and rows that were dropped before they could be sent, since the
    /// cursor's file was made.
    qint64 behind() const;
    qint64 dropped() const;
};

#endif
