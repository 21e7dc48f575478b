// kakb-station: the resident station. It holds the values of its links and shows them in a browser.
#include "machine/stationLinks.h"

#include <QCoreApplication>

int main(int count, char** arguments)
{
    const QCoreApplication application(count, arguments);
    return 0;
}
