#include "driverState.h"

#include <type_traits>

// Pins the type of every field. Hosts and panel projects are compiled against the records and the
// state, so a field of another type must not compile.

#define FIELD_HAS_TYPE(record, field, ...)                                                         \
    static_assert(std::is_same<decltype(record::field), __VA_ARGS__>::value,                       \
                  #record "::" #field " has another type")

FIELD_HAS_TYPE(VARIABLE, varId, qint32);
FIELD_HAS_TYPE(VARIABLE, station, qint32);
FIELD_HAS_TYPE(VARIABLE, regName, QString);
FIELD_HAS_TYPE(VARIABLE, addr, qint32);
FIELD_HAS_TYPE(VARIABLE, count, qint32);
FIELD_HAS_TYPE(VARIABLE, value, unsigned char[1024]);

FIELD_HAS_TYPE(FRAME_PRO, sendBuf, unsigned char[1024]);
FIELD_HAS_TYPE(FRAME_PRO, sendLen, qint32);
FIELD_HAS_TYPE(FRAME_PRO, recvLen, qint32);
FIELD_HAS_TYPE(FRAME_PRO, dataStart, qint32);
FIELD_HAS_TYPE(FRAME_PRO, itemCount, qint32);
FIELD_HAS_TYPE(FRAME_PRO, spare, qint32);
FIELD_HAS_TYPE(FRAME_PRO, var, VARIABLE);

FIELD_HAS_TYPE(KEY_ADDRESS, label, QString);
FIELD_HAS_TYPE(KEY_ADDRESS, param1, qint32);
FIELD_HAS_TYPE(KEY_ADDRESS, param2, qint32);
FIELD_HAS_TYPE(KEY_ADDRESS, station, qint32);
FIELD_HAS_TYPE(KEY_ADDRESS, regName, QString);
FIELD_HAS_TYPE(KEY_ADDRESS, typeText, QString);
FIELD_HAS_TYPE(KEY_ADDRESS, addr, qint32);
FIELD_HAS_TYPE(KEY_ADDRESS, unitMode, qint32);
FIELD_HAS_TYPE(KEY_ADDRESS, count, qint32);
FIELD_HAS_TYPE(KEY_ADDRESS, data, unsigned char[1024]);

FIELD_HAS_TYPE(_DATA_, spare, quint8);
FIELD_HAS_TYPE(_DATA_, writePending, quint8);
FIELD_HAS_TYPE(_DATA_, pendingBitWrites, quint32);
FIELD_HAS_TYPE(_DATA_, monitorFlags, quint32);
FIELD_HAS_TYPE(_DATA_, bitMonitorMask, quint32);
FIELD_HAS_TYPE(_DATA_, station, qint32);
FIELD_HAS_TYPE(_DATA_, regName, QString);
FIELD_HAS_TYPE(_DATA_, address, qint32);
FIELD_HAS_TYPE(_DATA_, readImage, quint8[4]);
FIELD_HAS_TYPE(_DATA_, writeImage, quint8[4]);

FIELD_HAS_TYPE(_RCP_VAR_PRO, linkNo, qint32);
FIELD_HAS_TYPE(_RCP_VAR_PRO, station, qint32);
FIELD_HAS_TYPE(_RCP_VAR_PRO, regName, QString);
FIELD_HAS_TYPE(_RCP_VAR_PRO, addr, qint32);
FIELD_HAS_TYPE(_RCP_VAR_PRO, count, qint32);
FIELD_HAS_TYPE(_RCP_VAR_PRO, bufOffset, qint32);
FIELD_HAS_TYPE(_RCP_VAR_PRO, spare, qint32);

FIELD_HAS_TYPE(Protocol, valueChangeCallBack, void (*)(int, int, QString&, int));
FIELD_HAS_TYPE(Protocol, callbackContext, qint32);
FIELD_HAS_TYPE(Protocol, localOnly, qint32);
FIELD_HAS_TYPE(Protocol, propC, qint32);
FIELD_HAS_TYPE(Protocol, retryLimit, qint32);
FIELD_HAS_TYPE(Protocol, mergeLimit, qint32);
FIELD_HAS_TYPE(Protocol, hostShared, unsigned char*);
FIELD_HAS_TYPE(Protocol, hostArg1, quint32);
FIELD_HAS_TYPE(Protocol, rcpBuffer, unsigned char*);
FIELD_HAS_TYPE(Protocol, hostMutex, QMutex*);
FIELD_HAS_TYPE(Protocol, readList, QList<VARIABLE>);
FIELD_HAS_TYPE(Protocol, writeList, QList<VARIABLE>);
FIELD_HAS_TYPE(Protocol, condReadList, QList<VARIABLE>);
FIELD_HAS_TYPE(Protocol, dataAreas, QList<_DATA_>);
FIELD_HAS_TYPE(Protocol, rcpVarsStaged, QVector<_RCP_VAR_PRO>);
FIELD_HAS_TYPE(Protocol, rcpVars, QVector<_RCP_VAR_PRO>);
FIELD_HAS_TYPE(Protocol, blockStartIndex, QList<qint32>);
FIELD_HAS_TYPE(Protocol, condVar, VARIABLE);
FIELD_HAS_TYPE(Protocol, regNames, QStringList);
FIELD_HAS_TYPE(Protocol, curVar, VARIABLE);
FIELD_HAS_TYPE(Protocol, curReadList, QList<VARIABLE>);
FIELD_HAS_TYPE(Protocol, frameKind, qint32);
FIELD_HAS_TYPE(Protocol, priorityCount, qint32);
FIELD_HAS_TYPE(Protocol, handshakePending, qint32);
FIELD_HAS_TYPE(Protocol, failCount, qint32);
FIELD_HAS_TYPE(Protocol, maxBitBlockLen, qint32);
FIELD_HAS_TYPE(Protocol, maxWordBlockLen, qint32);
FIELD_HAS_TYPE(Protocol, commFailed, qint32);
FIELD_HAS_TYPE(Protocol, frameIndex, qint32);
FIELD_HAS_TYPE(Protocol, initFlag, qint32);
FIELD_HAS_TYPE(Protocol, frameQueue, QList<FRAME_PRO>);
FIELD_HAS_TYPE(Protocol, queueMutex, QMutex);
FIELD_HAS_TYPE(Protocol, rcpIndex, qint32);
FIELD_HAS_TYPE(Protocol, propertyPage, QString);
FIELD_HAS_TYPE(Protocol, spareList, QList<qint32>);
FIELD_HAS_TYPE(Protocol, varsInFrame, qint32);
FIELD_HAS_TYPE(Protocol, spareFlag, qint32);
