#include "driverCaller.h"

#include "qtRecords.h"

#include <algorithm>

namespace model {

namespace {

enum { SHARED_BYTES = RECIPE_UPLOAD_FLAG + 64, UNTOUCHED = 0x5A, PRESENT_NUMBER = 77 };
enum { ONE_SENTINEL = 0x3C, OTHER_SENTINEL = 0xC3, SPARE_BYTES = 8 };

DriverCaller* s_host = nullptr;

QStringList presentTexts()
{
    return QStringList(QLatin1String("present"));
}

Outcome withTexts(int result, const QStringList& texts)
{
    Outcome outcome;
    outcome.result = result;
    for (const QString& text : texts)
        outcome.texts.push_back(plainText(text));
    return outcome;
}

} // namespace

DriverCaller::DriverCaller(const DriverFunctions& driver)
    : m_driver(driver), m_shared(SHARED_BYTES, UNTOUCHED)
{
    m_memory.recipe.assign(2 * RECIPE_WORDS, 0);
    m_shared[RECIPE_DOWNLOAD_FLAG] = 0;
    m_shared[RECIPE_UPLOAD_FLAG] = 0;
    s_host = this;
}

DriverCaller::~DriverCaller()
{
    s_host = nullptr;
}

void DriverCaller::onChange(int context, int station, QString& name, int addr)
{
    Notification told = {context, station, plainText(name), addr, {}};
    if (s_host->m_mutex.tryLock())
        s_host->m_mutex.unlock();
    else
        s_host->m_isToldUnderMutex = true;
    told.seen = s_host->valueRead(station, name, addr, 1);
    const Bytes beside = s_host->valueRead(station, name, neighbourOf(addr), 1);
    told.seen.insert(told.seen.end(), beside.begin(), beside.end());
    s_host->m_notifications.push_back(told);
    name = QLatin1String("changed by the callee");
}

/// The bytes that the driver wrote: those that do not depend on what was there before.
Bytes DriverCaller::valueRead(int station, const QString& area, int addr, int count) const
{
    const auto capacity = static_cast<size_t>(2 * std::max(count, 0) + SPARE_BYTES);
    Bytes one(capacity, ONE_SENTINEL);
    Bytes other(capacity, OTHER_SENTINEL);
    m_driver.getData(station, area, addr, count, one.data());
    m_driver.getData(station, area, addr, count, other.data());
    const auto end = std::mismatch(one.begin(), one.end(), other.begin()).first;
    return Bytes(one.begin(), end);
}

Outcome DriverCaller::operator()(const IdentityCall& call)
{
    Outcome outcome;
    int type = PRESENT_NUMBER;
    QString text;
    if (call.which == Identity::PROTOCOL_TYPE) {
        m_driver.getProtocolType(call.nullPointer ? nullptr : &type);
        if (!call.nullPointer) outcome.numbers = {type};
        return outcome;
    }
    QString* out = call.nullPointer ? nullptr : &text;
    if (call.which == Identity::VERSION) m_driver.getVersion(out);
    if (call.which == Identity::PARAMETER) m_driver.getDriverParameter(out);
    if (call.which == Identity::PROPERTY_PAGE) m_driver.getDriverPropertyPage(out);
    if (!call.nullPointer) outcome.texts = {plainText(text)};
    return outcome;
}

Outcome DriverCaller::operator()(const SetPageCall& call)
{
    Outcome outcome;
    const QString page = qtText(call.page);
    m_driver.setDriverPropertyPage(call.nullPointer ? nullptr : &page);
    if (!call.nullPointer) outcome.texts = {plainText(page)};
    return outcome;
}

Outcome DriverCaller::operator()(const CallbackCall& call)
{
    m_driver.setAddrValueChangeCallBack(call.set ? &DriverCaller::onChange : nullptr);
    return {};
}

Outcome DriverCaller::operator()(const InitCall& call)
{
    Outcome outcome;
    int status = PRESENT_NUMBER;
    std::string text = call.text;
    outcome.result = m_driver.initProperty(
        call.shared ? m_shared.data() : nullptr, call.arg,
        call.buffer ? m_memory.recipe.data() : nullptr, call.status ? &status : nullptr,
        call.hasText ? text.data() : nullptr, call.mutex ? &m_mutex : nullptr);
    if (call.status) outcome.numbers = {status};
    return outcome;
}

Outcome DriverCaller::operator()(const CheckCall& call)
{
    Outcome outcome;
    int addr = call.addr;
    outcome.result = m_driver.checkAddr(qtText(call.area), qtText(call.text), addr, call.dataType,
                                        call.count, call.accessMode);
    outcome.numbers = {addr};
    return outcome;
}

Outcome DriverCaller::operator()(const ValidityCall& call)
{
    Outcome outcome;
    int addr = call.addr;
    outcome.result = m_driver.checkAddrValidity(qtText(call.area), qtText(call.text), addr,
                                                call.count, call.isWord);
    outcome.numbers = {addr};
    return outcome;
}

Outcome DriverCaller::operator()(const DescribeCall& call)
{
    QStringList texts = presentTexts();
    const int result = m_driver.getRegDiscription(qtText(call.area), texts);
    return withTexts(result, texts);
}

Outcome DriverCaller::operator()(const AreaListCall& call)
{
    QStringList texts = presentTexts();
    const int result = m_driver.getRegListByType(call.kind, texts);
    return withTexts(result, texts);
}

Outcome DriverCaller::operator()(const SeriesCall& call)
{
    QVector<QString> texts(1, QLatin1String("present"));
    QVector<int> addrs(1, PRESENT_NUMBER);
    const int result =
        m_driver.multiCopy(qtText(call.area), call.start, call.count, call.interval, texts, addrs);
    Outcome outcome = withTexts(result, QStringList(QList<QString>(texts.begin(), texts.end())));
    outcome.numbers.assign(addrs.begin(), addrs.end());
    return outcome;
}

Outcome DriverCaller::operator()(const MergeCall& call)
{
    Outcome outcome;
    QList<KEY_ADDRESS> keys;
    for (const Key& key : call.keys)
        keys.append(qtKey(key));
    outcome.result = m_driver.addrMerge(keys);
    if (keys.size() != static_cast<int>(call.keys.size())) outcome.texts = {"host's list changed"};
    return outcome;
}

Outcome DriverCaller::operator()(const OneShotCall& call)
{
    Outcome outcome;
    KEY_ADDRESS key = qtKey(call.key);
    outcome.result = m_driver.addConditionRead(key, call.varId);
    return outcome;
}

Outcome DriverCaller::operator()(const RecipeCall& call)
{
    Outcome outcome;
    QVector<_RCP_VAR_PRO> records;
    for (const RecipeRecord& record : call.records)
        records.append(qtRecord(record));
    outcome.result = m_driver.setRcpAddress(records);
    return outcome;
}

Outcome DriverCaller::operator()(const NextFrameCall& call)
{
    Outcome outcome;
    FRAME_PRO frame;
    outcome.result = m_driver.getSendFrame(call.nullPointer ? nullptr : &frame);
    if (outcome.result == 1 && !call.nullPointer) outcome.frame = plainFrame(frame);
    return outcome;
}

Outcome DriverCaller::reply(const Bytes& bytes)
{
    Outcome outcome;
    QByteArray reply(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
    QString errorText = QLatin1String("before the call");
    outcome.result = m_driver.dealRcvFrame(reply, errorText);
    outcome.texts = {plainText(errorText)};
    outcome.notifications.swap(m_notifications);
    return outcome;
}

Outcome DriverCaller::operator()(const GetDataCall& call)
{
    Outcome outcome;
    const QString area = qtText(call.area);
    if (call.nullPointer) {
        outcome.result = m_driver.getData(call.station, area, call.addr, call.count, nullptr);
        return outcome;
    }
    outcome.bytes = valueRead(call.station, area, call.addr, call.count);
    Bytes room(outcome.bytes.size() + SPARE_BYTES);
    outcome.result = m_driver.getData(call.station, area, call.addr, call.count, room.data());
    return outcome;
}

Outcome DriverCaller::operator()(const SetDataCall& call)
{
    Outcome outcome;
    Bytes values = call.values;
    outcome.result = m_driver.setData(call.station, qtText(call.area), call.addr, call.count,
                                      values.data(), call.varId);
    outcome.notifications.swap(m_notifications);
    return outcome;
}

Outcome DriverCaller::operator()(const FlagCall& call)
{
    m_shared[call.upload ? RECIPE_UPLOAD_FLAG : RECIPE_DOWNLOAD_FLAG] = call.value;
    return {};
}

Outcome DriverCaller::operator()(const FillBufferCall& call)
{
    const Bytes bytes = recipeBytes(call.seed);
    std::copy(bytes.begin(), bytes.end(), m_memory.recipe.begin());
    return {};
}

const HostMemory& DriverCaller::memory()
{
    m_memory.downloadFlag = m_shared[RECIPE_DOWNLOAD_FLAG];
    m_memory.uploadFlag = m_shared[RECIPE_UPLOAD_FLAG];
    return m_memory;
}

std::string DriverCaller::misuse()
{
    if (!m_notifications.empty()) return "  the callback was told by a call that must not\n";
    if (m_isToldUnderMutex) return "  the callback was told while the host's mutex was locked\n";
    if (!m_mutex.tryLock()) return "  the host's mutex is still locked\n";
    m_mutex.unlock();
    return "";
}

std::string DriverCaller::damage() const
{
    const auto touched = std::count_if(m_shared.begin(), m_shared.end(),
                                       [](unsigned char byte) { return byte != UNTOUCHED; });
    const auto flags = std::count_if(m_shared.begin() + RECIPE_DOWNLOAD_FLAG,
                                     m_shared.begin() + RECIPE_UPLOAD_FLAG + 1,
                                     [](unsigned char byte) { return byte != UNTOUCHED; });
    return touched == flags ? "" : "  the shared block was written beside the flags\n";
}

} // namespace model
