// Breaks one rule of docs/threading.md, for the thread sanitizer to see.
//
//   broken_contract write|read|page|plan|flag|buffer
//
//   write    intf_setData beside the communication thread, without the mutex of all calls
//   read     intf_getData likewise
//   page     intf_SetDriverPropertyPage on two threads
//   plan     intf_addrMerge likewise
//   flag     a recipe flag raised without the host's mutex
//   buffer   the recipe buffer changed while a flag stands

#include "threadedHost.h"

#include <functional>
#include <iostream>
#include <map>
#include <string>

namespace {

enum { STEPS = 2000, RAISED_EVERY = 100 };

void setPage()
{
    const QString page = QLatin1String("page");
    ThreadedHost::driver().setDriverPropertyPage(&page);
}

std::map<std::string, std::function<void(ThreadedHost&, int)>> breaches()
{
    return {{"write", [](ThreadedHost& host, int i) { host.write(3000 + i % 8, i); }},
            {"read", [](ThreadedHost& host, int i) { host.read(3000 + i % 8); }},
            {"page", [](ThreadedHost&, int) { setPage(); }},
            {"plan", [](ThreadedHost& host, int) { host.poll(); }},
            {"flag", [](ThreadedHost& host, int) { host.shared[RECIPE_DOWNLOAD_FLAG] = 1; }},
            {"buffer", [](ThreadedHost& host, int i) {
                 if (i % RAISED_EVERY == 0) host.raise(RECIPE_DOWNLOAD_FLAG);
                 host.recipe[0] = static_cast<unsigned char>(i & 0xFF);
             }}};
}

} // namespace

int main(int argc, char** argv)
{
    const auto known = breaches();
    const auto breach = known.find(argc == 2 ? argv[1] : "");
    if (breach == known.end()) {
        std::cerr << "usage: broken_contract write|read|page|plan|flag|buffer\n";
        return 1;
    }
    ThreadedHost host;
    host.setRecipe();
    const bool ofThePage = breach->first == "page";
    RepeatingThread communication([&, step = 0]() mutable {
        if (ofThePage) setPage();
        ++step;
        host.plc.setElement(1, "MW", 3000 + step % 8, step & 0xFFFF); // for reads to bring news
        host.exchange();
    });
    for (int i = 0; i < STEPS || !communication.hasMade(STEPS); ++i)
        breach->second(host, i);
    return 0;
}
