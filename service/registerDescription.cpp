#include "registerDescription.h"

#include "quorvane_ka_kb_plc.h"
#include "serviceForProtocol.h"

/// The host's editor knows three widths: bit, up to a word, double word.
static QString widthCode(int dataWidth)
{
    if (dataWidth == 1) return QLatin1String("0");
    if (dataWidth == 32) return QLatin1String("2");
    return QLatin1String("1");
}

static QString accessCode(const QString& access)
{
    if (access == QLatin1String("R")) return QLatin1String("0");
    if (access == QLatin1String("W")) return QLatin1String("2");
    return QLatin1String("1");
}

void describeRow(AreaRow row, QStringList& out)
{
    out.append(row[FORMAT]);
    out.append(row[MIN_TEXT]);
    out.append(row[MAX_TEXT]);
    out.append(widthCode(row[DATA_WIDTH].toInt()));
    out.append(accessCode(row[ACCESS]));
}

int intf_getRegDiscription(QString regName, QStringList& out)
{
    const int index = areaIndex(regName);
    if (index < AREA_COUNT) describeRow(areaRow(index), out);
    return 0;
}

int intf_getRegListByType(int kind, QStringList& out)
{
    for (int i = 0; i < AREA_COUNT; ++i) {
        const int width = areaRow(i)[DATA_WIDTH].toInt();
        if (kind != 0 ? width > 1 : width == 1) out.append(areaName(i));
    }
    return kind == 0 || kind == 1 ? 1 : 0;
}
