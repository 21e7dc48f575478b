#include "calls.h"
#include "hexText.h"
#include "randomSource.h"

#include <sstream>

namespace model {

namespace {

std::string quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

const char* orNull(bool present, const char* name)
{
    return present ? name : "null";
}

std::string keyText(const Key& key)
{
    std::ostringstream out;
    out << "{station " << key.station << " " << quoted(key.area) << " " << key.addr << " count "
        << key.count << (key.unitMode == -1 ? " bits}" : "}");
    return out.str();
}

struct Writer
{
    std::ostringstream out;

    void operator()(const IdentityCall& call)
    {
        static const char* const NAMES[] = {"intf_getProtocolType", "intf_getVersion",
                                            "intf_getDriverParameter",
                                            "intf_getDriverPropertyPage"};
        out << NAMES[static_cast<int>(call.which)] << "(" << orNull(!call.nullPointer, "out")
            << ")";
    }
    void operator()(const SetPageCall& call)
    {
        out << "intf_SetDriverPropertyPage(" << (call.nullPointer ? "null" : quoted(call.page))
            << ")";
    }
    void operator()(const CallbackCall& call)
    {
        out << "intf_setAddrValueChangeCallBack(" << orNull(call.set, "callback") << ")";
    }
    void operator()(const InitCall& call)
    {
        out << "intf_initProperty(" << orNull(call.shared, "shared") << ", " << call.arg << ", "
            << orNull(call.buffer, "buffer") << ", " << orNull(call.status, "status") << ", "
            << (call.hasText ? quoted(call.text) : "null") << ", " << orNull(call.mutex, "mutex")
            << ")";
    }
    void operator()(const CheckCall& call)
    {
        out << "intf_checkAddr(" << quoted(call.area) << ", " << quoted(call.text) << ", "
            << call.addr << ", " << call.dataType << ", " << call.count << ", " << call.accessMode
            << ")";
    }
    void operator()(const ValidityCall& call)
    {
        out << "intf_checkAddrValidity(" << quoted(call.area) << ", " << quoted(call.text) << ", "
            << call.addr << ", " << call.count << ", " << call.isWord << ")";
    }
    void operator()(const DescribeCall& call)
    {
        out << "intf_getRegDiscription(" << quoted(call.area) << ")";
    }
    void operator()(const AreaListCall& call)
    {
        out << "intf_getRegListByType(" << call.kind << ")";
    }
    void operator()(const SeriesCall& call)
    {
        out << "intf_multiCopy(" << quoted(call.area) << ", " << call.start << ", " << call.count
            << ", " << call.interval << ")";
    }
    void operator()(const MergeCall& call)
    {
        out << "intf_addrMerge(";
        for (const Key& key : call.keys)
            out << keyText(key);
        out << ")";
    }
    void operator()(const OneShotCall& call)
    {
        out << "intf_addConditionRead(" << keyText(call.key) << ", " << call.varId << ")";
    }
    void operator()(const RecipeCall& call)
    {
        out << "intf_setRcpAddress(";
        for (const RecipeRecord& record : call.records)
            out << "{link " << record.linkNo << " station " << record.station << " "
                << quoted(record.area) << " " << record.addr << " count " << record.count
                << " offset " << record.offset << "}";
        out << ")";
    }
    void operator()(const NextFrameCall& call)
    {
        out << "intf_getSendFrame(" << orNull(!call.nullPointer, "frame") << ")";
    }
    void operator()(const ReplyCall& call)
    {
        static const char* const NAMES[] = {"good",           "empty",          "late",
                                            "truncated",      "extended",       "corrupted",
                                            "low CRC wrong",  "high CRC wrong", "other station",
                                            "other function", "exception",      "noise"};
        out << "intf_dealRcvFrame(" << NAMES[static_cast<int>(call.kind)] << " reply, seed "
            << call.seed << ")";
    }
    void operator()(const GetDataCall& call)
    {
        out << "intf_getData(" << call.station << ", " << quoted(call.area) << ", " << call.addr
            << ", " << call.count << ", " << orNull(!call.nullPointer, "out") << ")";
    }
    void operator()(const SetDataCall& call)
    {
        out << "intf_setData(" << call.station << ", " << quoted(call.area) << ", " << call.addr
            << ", " << call.count << ", {" << hexText(call.values) << "}, " << call.varId << ")";
    }
    void operator()(const FlagCall& call)
    {
        out << "host: " << (call.upload ? "upload" : "download") << " flag = " << int(call.value);
    }
    void operator()(const FillBufferCall& call)
    {
        out << "host: fills the recipe buffer, seed " << call.seed;
    }
};

} // namespace

std::string callText(const Call& call)
{
    Writer writer;
    std::visit(writer, call);
    return writer.out.str();
}

Bytes recipeBytes(unsigned seed)
{
    RandomSource random(seed);
    const bool bitsOnly = random.oneIn(2);
    Bytes bytes(2 * RECIPE_WORDS);
    for (unsigned char& byte : bytes)
        byte = static_cast<unsigned char>(random.below(bitsOnly ? 2 : 256));
    return bytes;
}

std::string hexText(const Bytes& bytes)
{
    enum { MOST_SHOWN = 64 };
    if (bytes.size() <= MOST_SHOWN) return hexOf(bytes);
    return hexOf(Bytes(bytes.begin(), bytes.begin() + MOST_SHOWN)) + " ... " +
           std::to_string(bytes.size()) + " bytes";
}

} // namespace model
