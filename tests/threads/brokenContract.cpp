// Breaks one rule of docs/threading.md, for the thread sanitizer to see.
//
//   broken_contract BREACH
//
// Each call beside the communication thread, without the mutex of all calls:
//   write     intf_setData
//   read      intf_getData
//   plan      intf_addrMerge
//   once      intf_addConditionRead
//   recipe    intf_setRcpAddress, while a transfer is under way
//   callback  intf_setAddrValueChangeCallBack
//   start     intf_initProperty
//   page      intf_SetDriverPropertyPage, by the communication thread as well
// The rules of the recipe:
//   flag      a recipe flag raised without the host's mutex
//   buffer    the recipe buffer changed while a flag stands

#include "builtDriver.h"
#include "threadedHost.h"

#include <functional>
#include <iostream>
#include <map>
#include <string>

namespace {

enum { STEPS = 2000, RAISED_EVERY = 100 };

void ignore(int, int, QString&, int) {}

void keepDownloading(ThreadedHost& host, int step)
{
    if (step % RAISED_EVERY == 0) host.raise(RECIPE_DOWNLOAD_FLAG);
}

std::map<std::string, std::function<void(ThreadedHost&, int)>> breaches()
{
    return {{"write", [](ThreadedHost& host, int i) { host.write(3000 + i % 8, i); }},
            {"read", [](ThreadedHost& host, int i) { host.read(3000 + i % 8); }},
            {"plan", [](ThreadedHost& host, int) { host.poll(); }},
            {"once", [](ThreadedHost& host, int i) { host.readOnce(3000 + i % 8); }},
            {"recipe",
             [](ThreadedHost& host, int i) {
                 keepDownloading(host, i);
                 host.setRecipe();
             }},
            {"callback", [](ThreadedHost&, int) { driver().setAddrValueChangeCallBack(ignore); }},
            {"start", [](ThreadedHost& host, int) { host.start(); }},
            {"page", [](ThreadedHost& host, int) { host.setPage(); }},
            {"flag", [](ThreadedHost& host, int) { host.shared[RECIPE_DOWNLOAD_FLAG] = 1; }},
            {"buffer", [](ThreadedHost& host, int i) {
                 keepDownloading(host, i);
                 host.recipe[0] = static_cast<unsigned char>(i & 0xFF);
             }}};
}

} // namespace

int main(int argc, char** argv)
{
    const auto known = breaches();
    const auto breach = known.find(argc == 2 ? argv[1] : "");
    if (breach == known.end()) {
        std::cerr << "usage: broken_contract BREACH\n";
        return 1;
    }
    ThreadedHost host;
    host.setRecipe();
    const bool ofThePage = breach->first == "page";
    RepeatingThread communication([&, step = 0]() mutable {
        if (ofThePage) host.setPage();
        ++step;
        host.plc.setElement(1, "MW", 3000 + step % 8, step & 0xFFFF); // for reads to bring news
        host.exchange();
    });
    for (int i = 0; i < STEPS || !communication.hasMade(STEPS); ++i)
        breach->second(host, i);
    return 0;
}
