#include "verbs/demo.h"

#include "driver/driverLibrary.h"
#include "exchange/replyRecogniser.h"
#include "links/exchange.h"

#include <QMutex>
#include <QMutexLocker>

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace {

enum {
    STATION = 1,
    LINK = 1, // handed to the driver as its context; recipe records name it too
    RETRY_LIMIT = 3,
    MERGE_LIMIT = 32,
    POLLS = 24,
    MOST_EXCHANGES = 1000,
    RECIPE_BYTES = 64,
    IW_START = 0,
    MW_START = 3000,
    QX_START = 0,
    MX_START = 3160,
    WRITTEN_WORD = MW_START + 1,
    WRITTEN_BIT = QX_START + 5
};

struct Change
{
    QString area;
    int addr;
};

// The callback has no argument for the host's own data, so what it notes lies here.
std::vector<Change> changes;

void noteChange(int, int, QString& area, int addr)
{
    changes.push_back({area, addr});
}

QString areaName(const char* name)
{
    return QString::fromLatin1(name);
}

KEY_ADDRESS polled(const char* area, int addr, int count)
{
    KEY_ADDRESS key;
    key.station = STATION;
    key.regName = areaName(area);
    key.addr = addr;
    key.count = count;
    key.unitMode = area[1] == 'X' ? -1 : 0;
    return key;
}

_RCP_VAR_PRO recipeVariable(const char* area, int addr, int count, int bufOffset)
{
    _RCP_VAR_PRO variable;
    variable.linkNo = LINK;
    variable.station = STATION;
    variable.regName = areaName(area);
    variable.addr = addr;
    variable.count = count;
    variable.bufOffset = bufOffset;
    return variable;
}

class Demo
{
public:
    Demo(const DriverLibrary& driver, Exchange& exchange);

    bool run();

private:
    void poll();
    bool write(const char* area, int addr, int value);
    bool transferRecipe(RecipeFlag flag, const char* verb);
    bool recipeRoundTrip();
    struct Ended
    {
        FRAME_PRO frame;
        bool well = false;
    };
    Ended exchangeOnce();
    void printChanges();
    int valueOf(const QString& area, int addr);
    void printFigures();

    const DriverLibrary& m_driver;
    Exchange& m_exchange;
    std::vector<unsigned char> m_shared;
    std::array<unsigned char, RECIPE_BYTES> m_recipe;
    QMutex m_mutex;
    int m_changes = 0;
};

Demo::Demo(const DriverLibrary& driver, Exchange& exchange)
    : m_driver(driver), m_exchange(exchange), m_shared(RECIPE_UPLOAD_FLAG + 1), m_recipe()
{
    QByteArray properties = QString(QLatin1String("%1#0#0#%2#%3"))
                                .arg(int(LINK))
                                .arg(int(RETRY_LIMIT))
                                .arg(int(MERGE_LIMIT))
                                .toLatin1();
    int status = 0;
    m_driver.initProperty(m_shared.data(), 0, m_recipe.data(), &status, properties.data(),
                          &m_mutex);
    m_driver.setAddrValueChangeCallBack(noteChange);

    QString version;
    m_driver.getVersion(&version);
    std::printf("driver %s\n", qPrintable(version));
}

int Demo::valueOf(const QString& area, int addr)
{
    unsigned char value[2] = {};
    m_driver.getData(STATION, area, addr, 1, value);
    return value[0] + value[1] * 256;
}

/// The callback comes before the value is in the cache, so values are fetched afterwards.
void Demo::printChanges()
{
    for (const Change& change : changes) {
        if (change.area == QLatin1String("RWI"))
            std::printf("  recipe word %d filled\n", change.addr);
        else
            std::printf("  %s %d = %d\n", qPrintable(change.area), change.addr,
                        valueOf(change.area, change.addr));
        ++m_changes;
    }
    changes.clear();
}

/// The frame that was answered or given up; one without an area when a retry is due or the driver
/// has nothing to do.
Demo::Ended Demo::exchangeOnce()
{
    const std::optional<FINISHED_EXCHANGE> finished = m_exchange.run();
    printChanges();
    if (!finished) return Ended();
    if (finished->exceptionCode != 0)
        std::printf("  refused: %s\n", exceptionText(finished->exceptionCode));
    if (finished->result == REPLY_GIVEN_UP)
        std::printf("  given up: %s\n", qPrintable(finished->errorText));
    if (finished->result == REPLY_RETRY) return Ended();
    return {finished->frame, finished->result == REPLY_ACCEPTED};
}

void Demo::poll()
{
    QList<KEY_ADDRESS> keys;
    keys << polled("IW", IW_START, 2) << polled("MW", MW_START, 4) << polled("QX", QX_START, 16)
         << polled("MX", MX_START, 16);
    std::printf("polling %d blocks\n", m_driver.addrMerge(keys));
    for (int i = 0; i < POLLS; ++i)
        exchangeOnce();
}

/// Confirmed means that the PLC acknowledged the frame that carried this very element.
bool Demo::write(const char* area, int addr, int value)
{
    std::printf("writing %s %d = %d\n", area, addr, value);
    const QString name = areaName(area);
    unsigned char bytes[2] = {static_cast<unsigned char>(value & 0xFF),
                              static_cast<unsigned char>(value >> 8)};
    m_driver.setData(STATION, name, addr, 1, bytes, 0);
    for (int i = 0; i < MOST_EXCHANGES; ++i) {
        const Ended ended = exchangeOnce();
        const VARIABLE& var = ended.frame.var;
        if (ended.frame.itemCount != 0 || var.regName != name || var.addr != addr) continue;
        if (!ended.well) break;
        std::printf("  confirmed, %s %d = %d\n", area, addr, valueOf(name, addr));
        return true;
    }
    std::printf("  not confirmed\n");
    return false;
}

bool Demo::transferRecipe(RecipeFlag flag, const char* verb)
{
    std::printf("recipe %s\n", verb);
    {
        QMutexLocker locker(&m_mutex);
        m_shared[flag] = 1;
    }
    for (int i = 0; i < MOST_EXCHANGES; ++i) {
        const Ended ended = exchangeOnce();
        QMutexLocker locker(&m_mutex);
        if (m_shared[flag] == 0) return ended.well;
    }
    return false;
}

bool Demo::recipeRoundTrip()
{
    QVector<_RCP_VAR_PRO> records;
    records << recipeVariable("MW", MW_START + 100, 4, 0)
            << recipeVariable("MW", MW_START + 110, 2, 4) << recipeVariable("QW", 20, 1, 6);
    if (m_driver.setRcpAddress(records) != records.size()) return false;

    for (size_t i = 0; i < 14; ++i)
        m_recipe[i] = static_cast<unsigned char>(0x10 + i);
    const auto sent = m_recipe;
    if (!transferRecipe(RECIPE_DOWNLOAD_FLAG, "download")) return false;
    m_recipe.fill(0);
    if (!transferRecipe(RECIPE_UPLOAD_FLAG, "upload")) return false;
    const bool same = m_recipe == sent;
    std::printf("  recipe came back %s\n", same ? "as it was sent" : "changed");
    return same;
}

void Demo::printFigures()
{
    const Exchange::Figures& figures = m_exchange.figures();
    std::printf("exchanges %d, retries %d, given up %d, changes %d\n", figures.exchanges,
                figures.retries, figures.giveUps, m_changes);
}

bool Demo::run()
{
    poll();
    const bool word = write("MW", WRITTEN_WORD, 1234);
    const bool bit = write("QX", WRITTEN_BIT, 1);
    const bool recipe = recipeRoundTrip();
    printFigures();
    return word && bit && recipe;
}

} // namespace

bool runDemo(const DriverLibrary& driver, Exchange& exchange)
{
    return Demo(driver, exchange).run();
}
