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
    quint8 spare;
    quint8 writePending;      ///< 1 while writeImage holds a value the PLC has not confirmed
    quint32 pendingBitWrites; ///< bit 2b: a write of bit b is pending, 2b + 1: a second is queued
    quint32 monitorFlags;     ///< which variables to report, see dataAreas.h
    quint32 bitMonitorMask;   ///< bit n: bit n of the unit is monitored as a variable of its own
    qint32 station;           ///< key
    QString regName;          ///< key
    qint32 address;           ///< key
    quint8 readImage[IMAGE_BYTES];  ///< last value read from the PLC
    quint8 writeImage[IMAGE_BYTES]; ///< last value written by the host

    _DATA_()
        : spare(0),
          writePending(0),
          pendingBitWrites(0),
          monitorFlags(0),
          bitMonitorMask(0),
          station(0),
          address(0),
          readImage(),
          writeImage()
    {
    }
};

Q_DECLARE_TYPEINFO(_DATA_, Q_MOVABLE_TYPE);

/// What the frame in flight is for.
enum FrameKind {
    FRAME_IDLE = 0,
    FRAME_HANDSHAKE = 1,
    FRAME_WRITE = 2,
    FRAME_CONDITIONAL_READ = 3,
    FRAME_CYCLIC_READ = 4,
    FRAME_RECIPE_DOWNLOAD = 5,
    FRAME_RECIPE_UPLOAD = 6
};

/// The whole state of the driver; `driver` is its one instance. Functions of the two units work on
/// it, so it has no members but its fields.
class Protocol
{
public:
    Protocol();
    ~Protocol();

    ValueChangeCallBack valueChangeCallBack;
    qint32 callbackContext; ///< handed back as the callback's first argument; names this link
    qint32 localOnly;       ///< nonzero: writes change the cache and are never queued
    qint32 propC;           ///< the host's, only stored
    qint32 retryLimit;      ///< rejected replies after which a frame is given up
    qint32 mergeLimit;      ///< largest span and gap of a merged read block, in units
    unsigned char* hostShared;
    quint32 hostArg1; ///< the host's, only stored
    unsigned char* rcpBuffer;
    QMutex* hostMutex; ///< guards hostShared
    QList<VARIABLE> readList;
    QList<VARIABLE> writeList;
    QList<VARIABLE> condReadList;
    QList<_DATA_> dataAreas;
    QVector<_RCP_VAR_PRO> rcpVarsStaged; ///< recipe variables of this link in register order
    QVector<_RCP_VAR_PRO> rcpVars;       ///< merged recipe blocks
    QList<qint32> blockStartIndex;       ///< per recipe block, its first index in rcpVarsStaged
    VARIABLE condVar;                    ///< the conditional read queued last
    QStringList regNames;
    VARIABLE curVar;             ///< what the frame in flight was built from
    QList<VARIABLE> curReadList; ///< curVar again, as the read-frame builder takes it
    qint32 frameKind;            ///< a FrameKind
    qint32 priorityCount;        ///< write and conditional-read frames sent in a row
    qint32 handshakePending;
    qint32 failCount; ///< rejected replies to the frame in flight
    qint32 maxBitBlockLen;
    qint32 maxWordBlockLen;
    qint32 commFailed; ///< 1 from a give-up to the next accepted reply
    qint32 frameIndex;
    qint32 initFlag;
    QList<FRAME_PRO> frameQueue; ///< the head is the frame on the wire
    QMutex queueMutex;           ///< held to remove or count writes; never with hostMutex
    qint32 rcpIndex;             ///< next block of rcpVars
    QString propertyPage;
    QList<qint32> spareList;
    qint32 varsInFrame;
    qint32 spareFlag;

private:
    Q_DISABLE_COPY(Protocol)
};

extern Protocol driver;

#endif
