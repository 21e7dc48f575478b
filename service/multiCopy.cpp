#include "multiCopy.h"

#include "addressBase.h"
#include "addressCodec.h"
#include "areaRow.h"
#include "quorvane_ka_kb_plc.h"
#include "serviceForProtocol.h"
#include "wrapAround.h"

/// Text of a word address number. Marker words are shifted back only in decimal, the one radix that
/// the device uses. An unknown radix repeats the text of the entry before.
static QString wordText(const QString& regName, const QString& format, int number,
                        const QString& previous)
{
    const quint32 byteOffset = quint32(wrapMul(number, 2));
    if (format.startsWith(QLatin1Char('D'))) {
        return QString::number(byteOffset - 2u * quint32(addressBase(regName, WORDS)));
    }
    if (format.startsWith(QLatin1Char('H'))) return QString::number(byteOffset, 16);
    if (format.startsWith(QLatin1Char('O'))) return QString::number(byteOffset, 8);
    return previous;
}

int multiCp(const QString& regName, const QString& format, int start, int count, int interval,
            QVector<QString>& outTexts, QVector<int>& outAddrs, int maxAddr,
            const QString& fillText)
{
    const bool bits = isBitFormat(format);
    int result = SERIES_COMPLETE;
    QString text;
    for (int k = 0; k < count; ++k) {
        int number = wrapAdd(start, wrapMul(k, interval));
        if (number > maxAddr) {
            number = maxAddr;
            text = fillText;
            result = SERIES_CLIPPED;
        } else if (bits) {
            text = addr_int2str(number, regName);
            if (text.isEmpty()) return SERIES_CLIPPED;
        } else {
            text = wordText(regName, format, number, text);
        }
        outAddrs.append(number);
        outTexts.append(text);
    }
    return result;
}

int intf_multiCopy(QString regName, int start, int count, int interval, QVector<QString>& outTexts,
                   QVector<int>& outAddrs)
{
    const int index = areaIndex(regName);
    if (index == AREA_COUNT) return SERIES_UNKNOWN_AREA;
    const AreaRow row = areaRow(index);
    int maxAddr = 0;
    a2i(row[MAX_TEXT], maxAddr, row[FORMAT], regName);
    return multiCp(regName, row[FORMAT], start, count, interval, outTexts, outAddrs, maxAddr,
                   row[MAX_TEXT]);
}
