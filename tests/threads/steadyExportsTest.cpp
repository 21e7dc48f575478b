// The exports that touch nothing that changes: each is called by two threads at once beside the
// communication thread and a new start now and then, with no mutex at all.

#include "builtDriver.h"
#include "threadedHost.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

namespace {

enum { CALLS = 300, EXCHANGES_A_START = 40 };

struct SteadyExport
{
    const char* name;
    std::function<bool(const DriverLibrary&)> answersRight;
};

std::ostream& operator<<(std::ostream& out, const SteadyExport& steady)
{
    return out << steady.name;
}

QString area(const char* name)
{
    return QLatin1String(name);
}

bool checksAddress(const DriverLibrary& driver)
{
    int number = 0;
    return driver.checkAddr(area("MW"), area("100"), number, 2, 1, 1) == ADDRESS_VALID &&
           number == 3050;
}

bool checksValidity(const DriverLibrary& driver)
{
    int number = 0;
    return driver.checkAddrValidity(area("MX"), area("12.3"), number, 1, 0) == ADDRESS_VALID &&
           number == 3099;
}

bool describesArea(const DriverLibrary& driver)
{
    QStringList out;
    driver.getRegDiscription(area("QX"), out);
    return out.size() == 5 && out.at(2) == area("511.7");
}

bool listsAreas(const DriverLibrary& driver)
{
    QStringList out;
    return driver.getRegListByType(1, out) == 1 && out.size() == 3 && out.at(0) == area("MW");
}

bool copiesSeries(const DriverLibrary& driver)
{
    QVector<QString> texts;
    QVector<int> numbers;
    return driver.multiCopy(area("IW"), 1, 3, 2, texts, numbers) == SERIES_COMPLETE &&
           texts.at(2) == area("10") && numbers.at(2) == 5;
}

bool tellsVersion(const DriverLibrary& driver)
{
    QString text;
    driver.getVersion(&text);
    return text == area("2.0.0.0");
}

bool tellsType(const DriverLibrary& driver)
{
    int type = -1;
    driver.getProtocolType(&type);
    return type == 0;
}

bool tellsParameter(const DriverLibrary& driver)
{
    QString text;
    driver.getDriverParameter(&text);
    return text.endsWith(area(",MW,IW,QW,MX,IX,QX"));
}

bool tellsPage(const DriverLibrary& driver)
{
    QString text;
    driver.getDriverPropertyPage(&text);
    return text == area("0_0");
}

const SteadyExport STEADY[] = {
    {"CheckAddr", checksAddress},         {"CheckAddrValidity", checksValidity},
    {"GetRegDiscription", describesArea}, {"GetRegListByType", listsAreas},
    {"MultiCopy", copiesSeries},          {"GetVersion", tellsVersion},
    {"GetProtocolType", tellsType},       {"GetDriverParameter", tellsParameter},
    {"GetDriverPropertyPage", tellsPage}};

class SteadyExports : public testing::TestWithParam<SteadyExport>
{
};

/// What the communication thread does: everything that changes the driver's state.
class BusyCommunication
{
public:
    void step()
    {
        if (++m_step % EXCHANGES_A_START == 0) {
            m_host.start();
            m_host.poll();
            m_host.setRecipe();
        }
        m_host.write(3000 + m_step % 8, m_step);
        m_host.readOnce(3000);
        m_host.exchange();
    }

private:
    ThreadedHost m_host;
    int m_step = 0;
};

} // namespace

TEST_P(SteadyExports, MayBeCalledAtAnyTimeOnAnyThread)
{
    const auto answersRight = GetParam().answersRight;
    BusyCommunication busy;
    RepeatingThread communication([&] { busy.step(); });
    RepeatingThread other([&] { EXPECT_TRUE(answersRight(driver())); });
    for (int i = 0; i < CALLS; ++i)
        EXPECT_TRUE(answersRight(driver()));
    other.await(CALLS);
    communication.await(2 * EXCHANGES_A_START);
}

INSTANTIATE_TEST_SUITE_P(BesideTheCommunicationThread, SteadyExports, testing::ValuesIn(STEADY),
                         [](const testing::TestParamInfo<SteadyExport>& steady) {
                             return std::string(steady.param.name);
                         });
