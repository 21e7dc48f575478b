// Any calls of the nineteen exports in any order, with valid pointers and small counts.

#include "frameRules.h"
#include "fuzzHost.h"
#include "fuzzInput.h"

#include <QStringList>

#include <string>

namespace {

enum { MOST_CALLS = 400, MOST_UNITS = 24, MOST_GROUPS = 3, MOST_KEYS = 6, MOST_QUEUED = 513 };

/// The four groups of exports, as one input goes through them.
class CallSequence
{
public:
    explicit CallSequence(FuzzInput& input) : m_input(input) {}

    void callAny();
    void requireUntouched()
    {
        m_host.requireUntouched();
    }

private:
    KEY_ADDRESS key();
    void initialise();
    void askIdentity();
    void editAddresses();
    void poll();
    void readOnce();
    void setRecipe();
    void moveFlags();
    void exchange();
    void useValues();

    FuzzInput& m_input;
    FuzzHost m_host;
};

KEY_ADDRESS CallSequence::key()
{
    KEY_ADDRESS made;
    made.station = m_input.station();
    made.regName = m_input.areaName();
    made.addr = m_input.addressNumber();
    made.count = m_input.count(MOST_UNITS);
    made.unitMode = m_input.number(-1, 0);
    return made;
}

void CallSequence::initialise()
{
    const int localOnly = m_input.number(0, 7) == 0 ? 1 : 0;
    m_host.initialise(localOnly, m_input.number(0, 3), m_input.number(-1, 125));
}

void CallSequence::askIdentity()
{
    int type = -1;
    intf_getProtocolType(&type);
    require(type == 0, "the protocol's type is 0");
    QString text;
    intf_getVersion(&text);
    require(text == QLatin1String("2.0.0.0"), "the version is told");
    intf_getDriverParameter(&text);
    require(text == QLatin1String("0,38400,8,NONE,1,0,51,192.168.1.100,8000,quorvane_ka_kb_plc,"
                                  "MW,IW,QW,MX,IX,QX"),
            "the parameters are always the same");
    intf_getDriverPropertyPage(&text);
    require(text == QLatin1String("0_0"), "the page is always the same");
    text = m_input.anyText(12);
    intf_SetDriverPropertyPage(m_input.yes() ? &text : nullptr);
}

void CallSequence::editAddresses()
{
    const QString area = m_input.areaName();
    const QString text = m_input.anyText(8);
    int number = 0;
    int result = intf_checkAddr(area, text, number, m_input.number(-1, 3), m_input.number(0, 9),
                                m_input.number(0, 3));
    require((result >= 0 && result <= 3) || result == ADDRESS_READ_ONLY, "a result is documented");
    result = intf_checkAddrValidity(area, text, number, m_input.number(0, 9), m_input.number(0, 1));
    require(result >= 0 && result <= 3, "a result is documented");
    QStringList out;
    intf_getRegDiscription(area, out);
    intf_getRegListByType(m_input.number(-1, 2), out);
    QVector<QString> texts;
    QVector<int> numbers;
    result = intf_multiCopy(area, m_input.addressNumber(), m_input.count(MOST_UNITS),
                            m_input.number(-9, 9), texts, numbers);
    require(result >= 0 && result <= 2, "a result is documented");
}

void CallSequence::poll()
{
    QList<KEY_ADDRESS> keys;
    for (int i = m_input.number(0, MOST_KEYS); i > 0; --i)
        keys.append(key());
    const int blocks = intf_addrMerge(keys);
    require(blocks >= 0 && blocks <= int(keys.size()), "merging makes no more blocks than keys");
}

void CallSequence::readOnce()
{
    KEY_ADDRESS wanted = key();
    if (!isWordName(wanted.regName)) wanted.count = m_input.count(MOST_GROUPS);
    require(intf_addConditionRead(wanted, m_input.anyNumber()) == 1, "a one-shot read returns 1");
    require(driver.condReadList.size() <= MOST_QUEUED, "the one-shot queue holds 513 blocks");
}

void CallSequence::setRecipe()
{
    QVector<_RCP_VAR_PRO> records;
    for (int i = m_input.number(0, MOST_KEYS); i > 0; --i) {
        _RCP_VAR_PRO record;
        record.linkNo = m_input.number(0, 7) == 0 ? m_input.anyNumber() : int(FuzzHost::CONTEXT);
        record.station = m_input.station();
        record.regName = m_input.areaName();
        record.addr = m_input.addressNumber();
        record.count =
            m_input.number(0, 15) == 0 ? m_input.number(500, 600) : m_input.count(MOST_UNITS);
        record.bufOffset = m_input.number(-1, 300);
        records.append(record);
    }
    const int kept = intf_setRcpAddress(records);
    require(kept >= 0 && kept <= int(records.size()), "no record is made up");
}

void CallSequence::moveFlags()
{
    const RecipeFlag flag = m_input.yes() ? RECIPE_DOWNLOAD_FLAG : RECIPE_UPLOAD_FLAG;
    if (m_input.number(0, 3) == 0)
        m_host.lower(flag);
    else
        m_host.raise(flag);
}

void CallSequence::exchange()
{
    FRAME_PRO frame;
    const bool planned = !driver.readList.isEmpty() && !m_host.isRaised(RECIPE_DOWNLOAD_FLAG) &&
                         !m_host.isRaised(RECIPE_UPLOAD_FLAG);
    for (int i = m_input.number(1, 12); i > 0; --i) {
        const bool offered = m_host.request(frame);
        if (i == 1 && planned) require(offered, "a polling engine never rests");
        m_host.answer(m_input.number(0, 2) == 0 ? anyReply(m_input, frame)
                                                : goodReply(m_input, frame));
    }
}

void CallSequence::useValues()
{
    const KEY_ADDRESS at = key();
    if (m_input.yes()) {
        const QByteArray values = m_input.bytes(2 * MOST_UNITS);
        m_host.write(at.station, at.regName, at.addr, at.count, values);
        const QByteArray shown = m_host.read(at.station, at.regName, at.addr, at.count);
        if (driver.regNames.contains(at.regName))
            require(shown == values.left(shown.size()), "a written value is shown at once");
        return;
    }
    m_host.read(at.station, at.regName, at.addr, at.count);
}

void CallSequence::callAny()
{
    switch (m_input.number(0, 15)) {
    case 0:
        return initialise();
    case 1:
        return askIdentity();
    case 2:
        return editAddresses();
    case 3:
    case 4:
        return poll();
    case 5:
    case 6:
        return readOnce();
    case 7:
        return setRecipe();
    case 8:
        return moveFlags();
    case 9:
    case 10:
        return useValues();
    default:
        return exchange();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput input(data, size);
    CallSequence calls(input);
    for (int i = 0; i < MOST_CALLS && input.isLeft(); ++i)
        calls.callAny();
    calls.requireUntouched();
    return 0;
}
