#ifndef DRIVER_STATE_H
#define DRIVER_STATE_H

#include "quorvane_ka_kb_plc.h"

#include <QList>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QVector>

enum { IMAGE_BYTES = 4 };

/// One cached unit of PLC memory: a word of a word area or a bit of a bit area of one station.
/// Images hold the least significant byte first; a bit uses byte 0, a word bytes 0 and 1.
struct _DATA_
{
    quint8 spare = 0;
    quint8 writePending = 0; ///< 1 while writeImage holds a value the PLC has not confirmed
    /// Bit 2b: a write of bit b is pending; bit 2b + 1: a second write is queued.
    quint32 pendingBitWrites = 0;
    quint32 monitorFlags = 0;   ///< which variables to report, see dataAreas.h
    quint32 bitMonitorMask = 0; ///< bit n: bit n of the unit is monitored as a variable of its own
    qint32 station = 0;         ///< key
    QString regName;            ///< key
    qint32 address = 0;         ///< key
    quint8 readImage[IMAGE_BYTES] = {};  ///< last value read from the PLC
    quint8 writeImage[IMAGE_BYTES] = {}; ///< last value written by the host
};

Q_DECLARE_TYPEINFO(_DATA_, Q_MOVABLE_TYPE);

/// The purpose of the frame in flight.
enum FrameKind {
    FRAME_IDLE = 0,
    FRAME_HANDSHAKE = 1,
    FRAME_WRITE = 2,
    FRAME_ONE_SHOT_READ = 3,
    FRAME_CYCLIC_READ = 4,
    FRAME_RECIPE_DOWNLOAD = 5,
    FRAME_RECIPE_UPLOAD = 6
};

/// The whole state of the driver; `driver` is its one instance. Free functions of the two units
/// work on it.
///
/// The order of the fields is fixed, because panel projects know it. So a heading comes back where
/// fields of its group follow later. service/recordTypes.cpp pins the types.
class Protocol
{
public:
    Protocol();
    ~Protocol();

    // Host's settings. intf_initProperty and intf_setAddrValueChangeCallBack set them; nothing else
    // changes them. The pointers belong to the host, and a null pointer switches its use off.

    ValueChangeCallBack valueChangeCallBack = 0;
    qint32 callbackContext = 0; ///< the callback's first argument; names this link
    qint32 localOnly = 0;       ///< nonzero: writes change the cache and are never queued
    qint32 propC = 0;           ///< the host's, only stored
    qint32 retryLimit = 0;      ///< rejected replies after which a frame is given up
    qint32 mergeLimit = 0;      ///< largest span and gap of a merged read block, in units
    unsigned char* hostShared = 0;
    quint32 hostArg1 = 0; ///< the host's, only stored
    unsigned char* rcpBuffer = 0;
    QMutex* hostMutex = 0; ///< guards hostShared

    // Queues and cache. The head of a queue is its oldest entry. It stays there while its frame is
    // in flight and leaves when the exchange is over.

    QList<VARIABLE> readList;     ///< cyclic read blocks; the head moves to the end after its turn
    QList<VARIABLE> writeList;    ///< one element each
    QList<VARIABLE> condReadList; ///< blocks of one-shot reads
    QList<_DATA_> dataAreas;      ///< the cache; units are only appended, so indices stay valid

    // Recipes. Block i of rcpVars covers the staged variables from blockStartIndex[i] to before
    // blockStartIndex[i + 1]. A set without a variable of this link empties rcpVarsStaged alone.

    QVector<_RCP_VAR_PRO> rcpVarsStaged; ///< recipe variables of this link in register order
    QVector<_RCP_VAR_PRO> rcpVars;       ///< merged recipe blocks
    QList<qint32> blockStartIndex;

    // Queues: the newest entry of condReadList, and the order of the keys in readList.

    VARIABLE condVar;     ///< the end of a block equal to this one is reported
    QStringList regNames; ///< the area names; a position here is part of the sort key

    // Frame in flight. Between exchanges these fields describe the exchange before.

    VARIABLE curVar;               ///< the variable that the frame was built from
    QList<VARIABLE> curReadList;   ///< curVar again, as the read-frame builder takes it
    qint32 frameKind = FRAME_IDLE; ///< a FrameKind
    qint32 priorityCount = 0;      ///< write and one-shot read frames sent one after the other
    qint32 handshakePending = 0;   ///< nonzero: the next frame is the handshake; nothing sets it
    qint32 failCount = 0;          ///< rejected replies to the frame at the head of frameQueue

    // Host's settings: block lengths, worked out from mergeLimit.

    qint32 maxBitBlockLen = 0;
    qint32 maxWordBlockLen = 0;

    // Frame in flight: result and place.

    qint32 commFailed = 0;       ///< 1 from a give-up to the next accepted reply
    qint32 frameIndex = 0;       ///< kept for the family: always 0, for frames of several variables
    qint32 initFlag = 0;         ///< kept for the family: 1 after initialisation; nothing reads it
    QList<FRAME_PRO> frameQueue; ///< the head is the frame on the wire; one frame at most
    QMutex queueMutex;           ///< held to remove or count writes; never with hostMutex

    // Recipes: place in the transfer. It survives intf_initProperty.

    qint32 rcpIndex = 0; ///< next block of rcpVars

    // Kept for the family. Other drivers of the family use these fields; this device stores into
    // some and decides nothing by them.

    QString propertyPage;
    QList<qint32> spareList;
    qint32 varsInFrame = 0; ///< variables in the frame just built: 1
    qint32 spareFlag = 0;

private:
    Q_DISABLE_COPY(Protocol)
};

extern Protocol driver;

#endif
