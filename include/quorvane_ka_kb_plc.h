#ifndef QUORVANE_KA_KB_PLC_H
#define QUORVANE_KA_KB_PLC_H

// Host interface of the quorvane ka_kb communication driver (Modbus RTU).
//
// A host loads the library by file name, resolves these functions by their plain names, and calls
// them in this order:
//
//   intf_initProperty, intf_setAddrValueChangeCallBack     once, before any traffic
//   intf_addrMerge                                          which variables to poll
//   loop: intf_getSendFrame -> send sendLen bytes -> collect up to recvLen bytes, with the host's
//         own time-out -> intf_dealRcvFrame
//
// All state is in the library: one loaded library serves one link.
//
// The driver owns no port, timer or thread. It asks one request at a time and accepts a reply by
// length and checksum alone. So the host makes sure that the bytes answer this very request.
//
// Threading. The driver takes no lock around its lists and its cache. The host serialises the
// calls, best by making them from one communication thread; intf_getData too, because it adds
// missing units to the cache. These functions read constants alone, and any thread may call them at
// any time: intf_getProtocolType, intf_getVersion, intf_getDriverParameter,
// intf_getDriverPropertyPage, intf_checkAddr, intf_checkAddrValidity, intf_getRegDiscription,
// intf_getRegListByType, intf_multiCopy. Another thread may raise a recipe flag under the host's
// mutex. The driver takes this mutex around the flags alone, inside intf_getSendFrame and
// intf_dealRcvFrame: a caller of these two must not hold it.
//
// The callback runs inside intf_dealRcvFrame and intf_setData, on their thread. It may call
// intf_getData and the functions that any thread may call. While it reports the end of a one-shot
// read ("-1") or a filled recipe word ("RWI"), it may call every function: then the driver holds no
// place in its lists.
// - A new start wins: nothing of the old exchange reaches the new lists or the new recipe buffer.
// - A reply handed in at "RWI" is ignored, because the reply to that request is being stored.
// - At "-1" the read is still in its list, but it is not offered again.
//
// Address numbers. A 32-bit integer names an address within an area:
//
//   area    text           number            range
//   IW QW   n, even        n / 2             0 to 255
//   MW      n, even        n / 2 + 3000      3000 to 7095
//   IX QX   b.k            8 b + k           0 to 4095
//   MX      b.k            8 b + k + 3000    3000 to 65535
//
// intf_checkAddr and intf_checkAddrValidity check ranges, and intf_multiCopy keeps to an area's
// end. No other function checks a range. Time and memory grow with the counts that a host hands in;
// the PLC answers at most 125 words in one read.
//
// Values are words of two bytes, low byte first, or bits of one byte each, 0 or 1.

#include <QByteArray>
#include <QList>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QVector>

#include <cstring>

#ifdef QUORVANE_KA_KB_PLC_BUILD
#define QUORVANE_KA_KB_PLC_API Q_DECL_EXPORT
#else
#define QUORVANE_KA_KB_PLC_API Q_DECL_IMPORT
#endif

enum {
    VALUE_BYTES = 1024, ///< value bytes carried by a VARIABLE or a KEY_ADDRESS
    FRAME_BYTES = 1024  ///< longest request
};

// The records are aggregates in C++14 and C++17: `VARIABLE var = {1, 2, area, 3000, 1, {}}`. C++11
// knows no aggregate with initial values; there, set the fields one by one.
//
// Three records copy their bytes with memcpy: the assignment that a compiler generates copies byte
// by byte.

/// One PLC variable, or a block of PLC memory.
struct VARIABLE
{
    qint32 varId = 0;   ///< writes and one-shot reads: the host's number; polled: 4; recipe: any
    qint32 station = 0; ///< the lowest byte is sent; 0 is a broadcast: no station answers
    QString regName;    ///< MW, IW, QW, MX, IX or QX
    qint32 addr = 0;    ///< address number of the first unit
    qint32 count = 0;   ///< words or bits
    unsigned char value[VALUE_BYTES] = {}; ///< words low byte first, bits one byte each

    VARIABLE() = default;
    /// Copies every field.
    VARIABLE(const VARIABLE&) = default;
    /// Copies every field.
    VARIABLE& operator=(const VARIABLE& other)
    {
        if (this == &other) return *this;
        varId = other.varId;
        station = other.station;
        regName = other.regName;
        addr = other.addr;
        count = other.count;
        std::memcpy(value, other.value, sizeof value);
        return *this;
    }
};

/// One request frame and the shape of its reply.
struct FRAME_PRO
{
    unsigned char sendBuf[FRAME_BYTES] = {}; ///< the request, checksum included
    qint32 sendLen = 0;                      ///< bytes of sendBuf to send; 0: send nothing
    qint32 recvLen = 0; ///< exact length of the reply; 0 or less, or with sendLen 0: none can come
    qint32 dataStart = 0; ///< offset of the first data byte in a read reply, else 0
    qint32 itemCount = 0; ///< units that a read asked for; 0: a write, or a read of station 0
    qint32 spare = 0;     ///< not used
    VARIABLE var;         ///< what the frame reads or writes

    FRAME_PRO() = default;
    /// Copies every field.
    FRAME_PRO(const FRAME_PRO&) = default;
    /// Copies every field.
    FRAME_PRO& operator=(const FRAME_PRO& other)
    {
        if (this == &other) return *this;
        std::memcpy(sendBuf, other.sendBuf, sizeof sendBuf);
        sendLen = other.sendLen;
        recvLen = other.recvLen;
        dataStart = other.dataStart;
        itemCount = other.itemCount;
        spare = other.spare;
        var = other.var;
        return *this;
    }
};

/// One address key of the host: a variable to poll, or units for a one-shot read.
struct KEY_ADDRESS
{
    QString label;                        ///< the host's
    qint32 param1 = 0;                    ///< the host's
    qint32 param2 = 0;                    ///< the host's
    qint32 station = 0;                   ///< only keys of one station share a request
    QString regName;                      ///< MW, IW, QW, MX, IX or QX
    QString typeText;                     ///< the host's
    qint32 addr = 0;                      ///< address number
    qint32 unitMode = 0;                  ///< -1: a bit area; anything else: a word area
    qint32 count = 0;                     ///< units from addr on
    unsigned char data[VALUE_BYTES] = {}; ///< the host's; the driver does not use it

    KEY_ADDRESS() = default;
    /// Copies every field.
    KEY_ADDRESS(const KEY_ADDRESS&) = default;
    /// Copies every field.
    KEY_ADDRESS& operator=(const KEY_ADDRESS& other)
    {
        if (this == &other) return *this;
        label = other.label;
        param1 = other.param1;
        param2 = other.param2;
        station = other.station;
        regName = other.regName;
        typeText = other.typeText;
        addr = other.addr;
        unitMode = other.unitMode;
        count = other.count;
        std::memcpy(data, other.data, sizeof data);
        return *this;
    }
};

/// One recipe variable.
struct _RCP_VAR_PRO
{
    qint32 linkNo = 0;    ///< the driver keeps records whose linkNo is its context number
    qint32 station = 0;   ///< 0 is a broadcast: a download to all, and no upload
    QString regName;      ///< MW, IW, QW, MX, IX or QX
    qint32 addr = 0;      ///< address number of the first unit
    qint32 count = 0;     ///< words or bits
    qint32 bufOffset = 0; ///< place of the first value in the recipe buffer, in 16-bit words
    qint32 spare = 0;     ///< the host's
};

Q_DECLARE_TYPEINFO(VARIABLE, Q_MOVABLE_TYPE);
Q_DECLARE_TYPEINFO(FRAME_PRO, Q_MOVABLE_TYPE);
Q_DECLARE_TYPEINFO(KEY_ADDRESS, Q_MOVABLE_TYPE);
Q_DECLARE_TYPEINFO(_RCP_VAR_PRO, Q_MOVABLE_TYPE);

/// Reports changes: context number of the property text, station, area name, address number. The
/// text is the callee's to change. A call stands for
/// - a monitored variable that a read brought another value for;
/// - a monitored word that the host writes with another value, and every such bit;
/// - a monitored word whose write was given up, and every such bit;
/// - (0, -1, "RWI", n): an upload filled word n of the recipe buffer;
/// - (-1, -1, "-1", 0 or -1): a one-shot block equal to the newest one was read, or was given up.
///
/// A first value of 0, a confirmed write and a read that is given up are not reported.
/// For reads and for new writes the callback runs before the cache is updated: note the address,
/// and call intf_getData after intf_dealRcvFrame or intf_setData has returned.
typedef void (*ValueChangeCallBack)(int context, int station, QString& regName, int addr);

/// Results of intf_checkAddr and intf_checkAddrValidity.
enum AddressCheckResult {
    ADDRESS_VALID = 0,            ///< outAddr holds the address number
    ADDRESS_KIND_MISMATCH = 1,    ///< a bit variable on a word area, or the reverse
    ADDRESS_OUT_OF_RANGE = 2,     ///< malformed, odd, below the minimum or past the maximum
    ADDRESS_UNKNOWN_AREA = 3,     ///< none of the six names
    ADDRESS_TYPE_NOT_ALLOWED = 5, ///< for areas of 32-bit units; this device has no such area
    ADDRESS_READ_ONLY = 6         ///< the host wants to write IW or IX
};

/// Results of intf_dealRcvFrame.
enum ReplyResult {
    REPLY_NOTHING_PENDING = 0, ///< there was no request in flight; the bytes were ignored
    REPLY_ACCEPTED = 1,        ///< the request is over, and its values are in the cache
    REPLY_GIVEN_UP = 2,        ///< rejected for the last time; the request is dropped
    REPLY_RETRY = 8 ///< rejected; the next intf_getSendFrame offers the same request again
};

/// Results of intf_multiCopy.
enum SeriesResult {
    SERIES_UNKNOWN_AREA = 0, ///< nothing was appended
    SERIES_COMPLETE = 1,     ///< no entry lies past the area's end; its beginning is not checked
    SERIES_CLIPPED = 2       ///< at least one entry lay past the area's end
};

/// Offsets in the host's shared block, which must reach to the second one at least. The host sets a
/// flag to 1 under its mutex to start a transfer; the driver sets the flag to 0 when the transfer
/// is over.
///
/// Raise a flag only after intf_setRcpAddress has kept a variable, and leave flags and recipe set
/// alone until the transfer is over. The driver keeps its place in the transfer whatever the host
/// does meanwhile:
/// - A flag that is lowered and raised again goes on from that place, even with another set.
/// - A reply in flight is spread over the records of the new set.
/// - With no block left at that place, or without any recipe, the driver builds its last request
///   again for as long as the flag stands, or no request if there was none since the start. Polling
///   stops, and a repeated write or one-shot read takes the next queued one with it.
enum RecipeFlag {
    RECIPE_DOWNLOAD_FLAG = 60115, ///< recipe buffer to PLC; goes before an upload
    RECIPE_UPLOAD_FLAG = 60116    ///< PLC to recipe buffer
};

// Every pointer may be null: the call leaves a null pointer alone. No function writes a log. No
// function throws, unless a count asks for more memory than there is.
extern "C" {

/// @name Identity and set-up
/// @{

/// Sets *type to 0.
QUORVANE_KA_KB_PLC_API void intf_getProtocolType(int* type);

/// The version of the driver's interface, "2.0.0.0".
QUORVANE_KA_KB_PLC_API void intf_getVersion(QString* version);

/// Comma-separated, by position: 0; baud rate, data bits, parity, stop bits; 0; 51; network
/// address, port; protocol name; then the six area names. Always the same text.
QUORVANE_KA_KB_PLC_API void intf_getDriverParameter(QString* parameter);

/// The driver's settings page for the host's editor, "0_0".
QUORVANE_KA_KB_PLC_API void intf_getDriverPropertyPage(QString* page);

/// Stores the host's settings page; nothing reads it back.
QUORVANE_KA_KB_PLC_API void intf_SetDriverPropertyPage(const QString* page);

/// Sets the callback; null: changes are not reported.
QUORVANE_KA_KB_PLC_API void intf_setAddrValueChangeCallBack(ValueChangeCallBack callBack);

/// Starts the driver, or starts it anew: read plan, pending writes, one-shot reads, queued frames
/// and cache are dropped. The recipe set stays, and so does the place in a transfer under way.
/// Restart between transfers, because a flag raised afterwards goes on from that place.
/// @param shared     block with the recipe flags; without one, no recipe is ever started
/// @param arg        stored only
/// @param rcpBuffer  recipe values as words, low byte first. The driver does not know its size: it
///                   must hold `count` words from each record's offset on, and where records merge
///                   into one block, the block's count from the first record's offset on.
/// @param status     set to 0
/// @param text       Latin-1 "context#localOnly#number#retryLimit#mergeLimit", decimal. A part that
///                   is no number counts as 0. With fewer than five parts the previous five stay.
///                   context: the callback's first argument, and the link whose recipe records
///                   are kept. localOnly: nonzero keeps every write in the cache and sends none.
///                   retryLimit: rejected replies after which a request is given up (1 or less: at
///                   the first). mergeLimit: most units that merging puts into one read block,
///                   and most words in one block of a one-shot read, 1 to 125. A single key is
///                   never cut by merging, however long; below 1 no one-shot read is cut either.
/// @param mutex      guards the flags in the shared block, for the host and for the driver
/// @return 1
/// The pointers are borrowed until the next call or until the library is unloaded.
QUORVANE_KA_KB_PLC_API int intf_initProperty(unsigned char* shared, int arg,
                                             unsigned char* rcpBuffer, int* status, char* text,
                                             QMutex* mutex);

/// @}
/// @name Addresses
/// @{

/// Checks one variable of the host's editor.
/// @param outAddr     receives the address number; after a failure, the conversion's raw value
/// @param dataType    -1 for a bit variable; any other number for a word variable
/// @param count       units that the variable takes
/// @param accessMode  1 or 2 when the host will write it
/// @return an AddressCheckResult; ADDRESS_OUT_OF_RANGE for an unknown area with outAddr below 0 or
///         outAddr + count above 1
QUORVANE_KA_KB_PLC_API int intf_checkAddr(QString regName, QString addrText, int& outAddr,
                                          int dataType, int count, int accessMode);

/// The same without the tests of access and data type; isWord is 0 for a bit variable.
QUORVANE_KA_KB_PLC_API int intf_checkAddrValidity(QString regName, QString addrText, int& outAddr,
                                                  int count, int isWord);

/// Appends an area's address format, lowest and highest address, width code ("0" bit, "1" up to 16
/// bits, "2" 32 bits) and access code ("0" read, "1" read and write, "2" write). An unknown area
/// appends nothing.
/// @return 0
QUORVANE_KA_KB_PLC_API int intf_getRegDiscription(QString regName, QStringList& out);

/// Appends the names of the bit areas (kind 0) or of the word areas (any other kind).
/// @return 1 for kind 0 or 1, else 0
QUORVANE_KA_KB_PLC_API int intf_getRegListByType(int kind, QStringList& out);

/// Appends count addresses from start on, every interval units, as texts and as address numbers.
/// An entry past the area's end becomes the area's highest address.
/// @return a SeriesResult
QUORVANE_KA_KB_PLC_API int intf_multiCopy(QString regName, int start, int count, int interval,
                                          QVector<QString>& outTexts, QVector<int>& outAddrs);

/// @}
/// @name Variables to transfer
/// @{

/// Replaces the variables that are polled and reported through the callback. Keys of one station
/// and area are merged into blocks: words only when they start at the same address, bits only
/// within a group of 16. The host's list is left as it is; keys of unknown areas are dropped.
/// A block of bits is decoded from the first bit of its group of 16 (markers: from 3000 + 16 k),
/// `count` bits from there: hand in whole groups to see every bit. In a longer block only the first
/// 16 bits are decoded right; bits from the 48th on read as 0.
/// @return the number of blocks
QUORVANE_KA_KB_PLC_API int intf_addrMerge(QList<KEY_ADDRESS>& keys);

/// Queues one read of key.count units, ahead of the cyclic reads, in blocks of the merge limit for
/// words and 8 times that for unitMode -1. For a bit area the count is in groups of 16 bits, and so
/// are its blocks: ask for one group at a time, because only the first is decoded right.
/// The callback reports the end of a block that is equal to the newest one. So only the last of
/// several different requests is reported, and a request made twice may be reported twice. A block
/// given up drops all the others, reported or not. A block that is queued already is not queued
/// twice, unless it is the oldest. The queue holds 513 blocks; beyond that the newest replaces the
/// last one. An unknown area queues nothing.
/// @param varId  carried into the frames; a number other than 4 tells them from polled blocks
/// @return 1
QUORVANE_KA_KB_PLC_API int intf_addConditionRead(KEY_ADDRESS& key, int varId);

/// Replaces the recipe set by the records that belong to this link. A set without such a record
/// leaves the previous blocks in place, but an upload no longer stores into the buffer.
/// Records are sorted, and words that start at the same address, or bits that touch, become one
/// block. A download takes the block's values from the first record's offset on without gaps: two
/// bytes a word; for bits one byte a bit. An upload stores whole words, so recipes are meant for
/// word areas.
/// A block that cannot be transferred (more than 507 words or 1024 bits to write, a count or offset
/// below 0, an unknown area, no recipe buffer) fails after the blocks before it: the driver offers
/// a frame with nothing to send that no reply can answer, until the frame is given up.
/// @return the number of records kept
QUORVANE_KA_KB_PLC_API int intf_setRcpAddress(QVector<_RCP_VAR_PRO>& records);

/// @}
/// @name Exchange
/// @{

/// The next request, or the pending one again until intf_dealRcvFrame has ended it. In order: a
/// recipe transfer; a write, at most 10 one after the other; a one-shot read, if fewer than 3
/// writes and one-shot reads went out since the last cyclic block; the next cyclic block.
/// @return 1 with *frame filled; 0 with nothing to send. While nothing is polled, a 0 may come with
///         work still queued: after 10 writes, and after 3 or more writes and one-shot reads ahead
///         of a one-shot read. The next call goes on with the rest.
/// With sendLen 0 there is nothing to send: hand in an empty reply. A null frame chooses nothing
/// and gives 0.
QUORVANE_KA_KB_PLC_API int intf_getSendFrame(FRAME_PRO* frame);

/// Takes in the reply to the request in flight. An empty reply reports a time-out, or that a
/// broadcast was sent.
/// @param errorText  emptied; for REPLY_GIVEN_UP "length,station,address,area" with the length of
///                   the rejected reply
/// @return a ReplyResult
/// When a write is given up the cache falls back to the last read value, and the callback reports
/// the bit or the monitored word.
QUORVANE_KA_KB_PLC_API int intf_dealRcvFrame(QByteArray& reply, QString& errorText);

/// @}
/// @name Values
/// @{

/// Copies `count` elements from the cache: two bytes a word, low byte first, or one byte a bit. An
/// unconfirmed write of the host takes the place of the read value, until a read brings another
/// value. A unit never read is 0. An unknown area or a count below 1 copies nothing.
/// @param out  at least 2 x count bytes for words, count bytes for bits
/// @return 1
QUORVANE_KA_KB_PLC_API int intf_getData(int station, QString regName, int address, int count,
                                        unsigned char* out);

/// Writes `count` elements: queues one request per element, unless localOnly is set, reports the
/// changes, and shows the values in the cache at once. A queued write of the same element is
/// replaced, unless it is the oldest. The queue holds 513 writes; beyond that the newest replaces
/// the last one. An unknown area does nothing.
/// @param values  two bytes a word, low byte first, or one byte a bit
/// @param varId   carried into the frames
/// @return 1
/// A second write of an element that is in flight is shown as confirmed when the first one is.
QUORVANE_KA_KB_PLC_API int intf_setData(int station, QString regName, int addr, int count,
                                        unsigned char* values, int varId);

/// @}
}

#endif
