#include "output/columnText.h"

#include <algorithm>
#include <string>

namespace {

const char32_t ELLIPSIS = 0x2026;

bool isPrintable(char32_t codePoint)
{
    switch (QChar::category(codePoint)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

} // namespace

QString printableText(const QString& text)
{
    std::u32string codePoints = text.toStdU32String();
    for (char32_t& codePoint : codePoints) {
        if (!isPrintable(codePoint)) codePoint = U'?';
    }
    return QString::fromStdU32String(codePoints);
}

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
