#include "modelCaller.h"

#include "modelAddresses.h"

namespace model {

namespace {

/// The out parameters that a host hands in are not empty, and are appended to.
const char* const PRESENT_TEXT = "present";
enum { PRESENT_NUMBER = 77, BIT_DATA_TYPE = -1 };

const char* const PARAMETER = "0,38400,8,NONE,1,0,51,192.168.1.100,8000,quorvane_ka_kb_plc,"
                              "MW,IW,QW,MX,IX,QX";

} // namespace

ModelCaller::ModelCaller()
{
    m_memory.recipe.assign(2 * RECIPE_WORDS, 0);
}

Outcome ModelCaller::operator()(const IdentityCall& call)
{
    Outcome outcome;
    if (call.nullPointer) return outcome;
    switch (call.which) {
    case Identity::PROTOCOL_TYPE:
        outcome.numbers = {0};
        break;
    case Identity::VERSION:
        outcome.texts = {"2.0.0.0"};
        break;
    case Identity::PARAMETER:
        outcome.texts = {PARAMETER};
        break;
    case Identity::PROPERTY_PAGE:
        outcome.texts = {"0_0"};
        break;
    }
    return outcome;
}

Outcome ModelCaller::operator()(const SetPageCall& call)
{
    Outcome outcome;
    if (!call.nullPointer) outcome.texts = {call.page};
    return outcome;
}

Outcome ModelCaller::operator()(const CallbackCall& call)
{
    m_model.setCallback(call.set);
    return {};
}

Outcome ModelCaller::operator()(const InitCall& call)
{
    Outcome outcome;
    outcome.result = m_model.initProperty(call.shared ? &m_memory : nullptr,
                                          call.buffer ? &m_memory.recipe : nullptr,
                                          call.hasText ? &call.text : nullptr);
    if (call.status) outcome.numbers = {0};
    return outcome;
}

Outcome ModelCaller::operator()(const CheckCall& call)
{
    Outcome outcome;
    int addr = call.addr;
    const bool writes = call.accessMode == 1 || call.accessMode == 2;
    outcome.result = checkAddress(call.area, call.text, addr, call.dataType == BIT_DATA_TYPE,
                                  call.count, writes);
    outcome.numbers = {addr};
    return outcome;
}

Outcome ModelCaller::operator()(const ValidityCall& call)
{
    Outcome outcome;
    int addr = call.addr;
    outcome.result = checkAddress(call.area, call.text, addr, call.isWord == 0, call.count, false);
    outcome.numbers = {addr};
    return outcome;
}

Outcome ModelCaller::operator()(const DescribeCall& call)
{
    Outcome outcome;
    outcome.texts = {PRESENT_TEXT};
    for (const std::string& text : describeArea(call.area))
        outcome.texts.push_back(text);
    return outcome;
}

Outcome ModelCaller::operator()(const AreaListCall& call)
{
    Outcome outcome;
    outcome.result = call.kind == 0 || call.kind == 1 ? 1 : 0;
    outcome.texts = {PRESENT_TEXT};
    for (const std::string& name : areaNames(call.kind != 0))
        outcome.texts.push_back(name);
    return outcome;
}

Outcome ModelCaller::operator()(const SeriesCall& call)
{
    Outcome outcome;
    outcome.texts = {PRESENT_TEXT};
    outcome.numbers = {PRESENT_NUMBER};
    outcome.result = addressSeries(call.area, call.start, call.count, call.interval, outcome.texts,
                                   outcome.numbers);
    return outcome;
}

Outcome ModelCaller::operator()(const MergeCall& call)
{
    Outcome outcome;
    outcome.result = m_model.addrMerge(call.keys);
    return outcome;
}

Outcome ModelCaller::operator()(const OneShotCall& call)
{
    Outcome outcome;
    outcome.result = m_model.addConditionRead(call.key, call.varId);
    return outcome;
}

Outcome ModelCaller::operator()(const RecipeCall& call)
{
    Outcome outcome;
    outcome.result = m_model.setRcpAddress(call.records);
    return outcome;
}

Outcome ModelCaller::operator()(const NextFrameCall& call)
{
    // Without a place for the frame nothing is chosen: a request that nobody sends is not begun.
    Outcome outcome;
    if (call.nullPointer) return outcome;
    outcome.frame = m_model.getSendFrame();
    outcome.result = outcome.frame ? 1 : 0;
    return outcome;
}

Outcome ModelCaller::reply(const Bytes& bytes)
{
    Outcome outcome;
    outcome.texts.resize(1);
    outcome.result = m_model.dealRcvFrame(bytes, outcome.texts[0]);
    outcome.notifications = m_model.takeNotifications();
    return outcome;
}

Outcome ModelCaller::operator()(const GetDataCall& call)
{
    Outcome outcome;
    const Bytes values = m_model.getData(call.station, call.area, call.addr, call.count);
    outcome.result = 1;
    if (!call.nullPointer) outcome.bytes = values;
    return outcome;
}

Outcome ModelCaller::operator()(const SetDataCall& call)
{
    Outcome outcome;
    outcome.result = m_model.setData(call.station, call.area, call.addr, call.values, call.varId);
    outcome.notifications = m_model.takeNotifications();
    return outcome;
}

Outcome ModelCaller::operator()(const FlagCall& call)
{
    (call.upload ? m_memory.uploadFlag : m_memory.downloadFlag) = call.value;
    return {};
}

Outcome ModelCaller::operator()(const FillBufferCall& call)
{
    m_memory.recipe = recipeBytes(call.seed);
    return {};
}

} // namespace model
