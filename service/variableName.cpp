#include "variableName.h"

QString areaPart(const QString& name)
{
    return name.left(name.indexOf(QLatin1Char('_')));
}

QString suffixPart(const QString& name)
{
    const int at = int(name.indexOf(QLatin1Char('_')));
    return at < 0 ? QString() : name.mid(at + 1);
}

bool namesBitOfUnit(const QString& name)
{
    return name.contains(QLatin1String("_bit"));
}
