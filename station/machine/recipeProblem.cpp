#include "machine/recipeProblem.h"

#include "plan/sharedMemory.h"
#include "plan/tagValue.h"

namespace {

enum { BYTES_PER_WORD = 2 };

int bytesOf(const Tag& tag)
{
    return tag.isBit() ? 1 : BYTES_PER_WORD * tag.units();
}

QString valueProblemOf(const Tag& tag, const QByteArray& bytes)
{
    if (bytes.isEmpty()) return QLatin1String("the value is missing");
    if (int(bytes.size()) != bytesOf(tag)) return QLatin1String("the value has another size");
    const QString text = tagValueText(tag, bytes);
    if (text.at(text.size() - 1).isDigit()) return QString();
    return text + QLatin1String(" is not written");
}

QString placeProblemOf(const Tag& tag)
{
    if (tag.area.startsWith(QLatin1Char('I'))) return tag.area + QLatin1String(" is read-only");
    return coilProblem(tag.area, tag.number, tag.units());
}

QString problemOf(const RecipeRequest& request, size_t row)
{
    const Tag& tag = request.rows[row];
    if (request.kind == RecipeRequest::UPLOAD) return QString();
    if (row >= request.values.size()) return QLatin1String("the value is missing");
    const QString problem = valueProblemOf(tag, request.values[row]);
    if (!problem.isEmpty() || request.kind == RecipeRequest::COMPARE) return problem;
    return placeProblemOf(tag);
}

} // namespace

QString recipeProblem(const RecipeRequest& request)
{
    if (request.rows.empty()) return QLatin1String("the recipe has no rows");
    for (size_t row = 0; row < request.rows.size(); ++row) {
        const QString problem = problemOf(request, row);
        if (!problem.isEmpty()) return request.rows[row].name + QLatin1String(": ") + problem;
    }
    return QString();
}
