#include "addressCodec.h"

#include "addressBase.h"
#include "areaClass.h"
#include "wrapAround.h"

#include <QStringList>

int addr_str2int(const QString& text, const QString& regName)
{
    if (!isBitArea(regName)) return 0;
    const QStringList parts = text.split(QLatin1Char('.'));
    if (parts.size() != 2) return -1;
    bool byteOk = false;
    bool bitOk = false;
    const int byte = parts.at(0).toInt(&byteOk, 10);
    const int bit = parts.at(1).toInt(&bitOk, 10);
    if (!byteOk || !bitOk) return -1;
    return wrapAdd(wrapAdd(wrapMul(byte, 8), bit), addressBase(regName, BITS));
}

QString addr_int2str(int addr, const QString& regName)
{
    if (!isBitArea(regName)) return QString();
    const int number = wrapSub(addr, addressBase(regName, BITS));
    return QString::number(number / 8) + QLatin1Char('.') + QString::number(number % 8);
}

bool isBitFormat(const QString& format)
{
    return !format.isEmpty() && format.count(format.at(0)) != format.size();
}

static int radixOfFormat(const QString& format)
{
    if (format.endsWith(QLatin1Char('O'))) return 8;
    if (format.endsWith(QLatin1Char('H'))) return 16;
    return 10;
}

int a2i(const QString& text, int& out, const QString& format, const QString& regName)
{
    if (isBitFormat(format)) {
        const int number = addr_str2int(text, regName);
        if (number == -1) return -1;
        out = number;
        return 1;
    }
    bool ok = false;
    out = text.toInt(&ok, radixOfFormat(format));
    if (out % 2 == 1) return -1;
    out = out / 2 + addressBase(regName, WORDS);
    return ok ? 1 : -1;
}

int addrOffset(const QString& regName, int addr)
{
    Q_UNUSED(regName);
    return addr;
}

static int nibbleAt(const QByteArray& bytes, int position)
{
    if (position < 0 || position >= bytes.size()) return 0;
    const int code = static_cast<unsigned char>(bytes.at(position));
    if (code < '0' || code == '@') return 0;
    return (code < '@' ? code : code - 'A' + 10) & 15;
}

int asc2hex(const QByteArray& bytes, int position)
{
    return nibbleAt(bytes, position) * 16 + nibbleAt(bytes, wrapAdd(position, 1));
}
