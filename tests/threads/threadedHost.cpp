#include "threadedHost.h"

#include "builtDriver.h"

namespace {

void ignore(int, int, QString&, int) {}

} // namespace

ThreadedHost::ThreadedHost(ValueChangeCallBack callBack)
    : BenchHost(::driver(), {3, 32, RECIPE_WORDS, callBack != nullptr ? callBack : ignore}),
      plc(STATION)
{
    poll();
}

void ThreadedHost::poll() const
{
    BenchHost::poll({{STATION, "MW", 3000, 8}, {STATION, "IW", 0, 4}, {STATION, "QX", 0, 16}});
}

void ThreadedHost::setRecipe() const
{
    std::vector<Units> records;
    for (int word = 0; word < RECIPE_WORDS; word += 4)
        records.push_back({STATION, "MW", RECIPE_ADDRESS + 2 * word, 4}); // apart: a block each
    BenchHost::setRecipe(records);
}

void ThreadedHost::setPage() const
{
    const QString page = QLatin1String("page");
    driver.setDriverPropertyPage(&page);
}

bool ThreadedHost::exchange()
{
    FRAME_PRO frame;
    if (!nextFrame(frame)) return false;
    takeReply(plc.answer(requestOf(frame)));
    return true;
}
