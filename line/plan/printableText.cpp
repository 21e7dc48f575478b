#include "plan/printableText.h"

#include <string>

namespace {

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
