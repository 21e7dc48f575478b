#include "output/columnText.h"

#include <algorithm>
#include <string>

namespace {

const char32_t ELLIPSIS = 0x2026;

} // namespace

int columnsOf(const QString& text)
{
    return int(text.toStdU32String().size());
}

QString cutText(const QString& text, int width)
{
    if (width <= 0) return QString();
    std::u32string codePoints = text.toStdU32String();
    if (codePoints.size() <= std::size_t(width)) return text;
    codePoints.resize(std::size_t(width));
    codePoints.back() = ELLIPSIS;
    return QString::fromStdU32String(codePoints);
}

QString columnText(const QString& text, int width, Alignment alignment)
{
    const QString cut = cutText(text, width);
    const QString padding(std::max(0, width - columnsOf(cut)), QLatin1Char(' '));
    return alignment == LEFT_ALIGNED ? cut + padding : padding + cut;
}
