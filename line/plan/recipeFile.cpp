#include "plan/recipeFile.h"

#include "plan/tagText.h"
#include "plan/tagValue.h"

#include <QStringList>

namespace {

QString valueProblemFor(RecipeUse use, const Tag& tag, const QString& text)
{
    if (use == FOR_UPLOAD && text.isEmpty()) return QString();
    return valueProblem(tag, text, use == FOR_DOWNLOAD ? REFUSE_NON_FINITE : ALLOW_NON_FINITE);
}

Recipe recipeOf(const QByteArray& text, const DriverLibrary& driver, RecipeUse use)
{
    Recipe recipe;
    const ValueJudge judge = [&](const Tag& tag, const QString& value) -> QString {
        recipe.values.push_back(QByteArray());
        const QString readOnly = writeProblem(tag, driver);
        if (!readOnly.isEmpty()) return readOnly;
        const QString problem = valueProblemFor(use, tag, value);
        if (!problem.isEmpty()) return problem;
        recipe.values.back() = tagValueBytes(tag, value).value_or(QByteArray());
        return QString();
    };
    recipe.text = text;
    recipe.tags = readTags(text, driver, judge);
    if (recipe.tags.empty()) throw TagFileError("the recipe has no values");
    return recipe;
}

} // namespace

Recipe readRecipeFile(const QString& fileName, const DriverLibrary& driver, RecipeUse use)
{
    const QByteArray bytes = fileBytes(fileName);
    try {
        return recipeOf(bytes, driver, use);
    } catch (const TagFileError& error) {
        throw errorInFile(fileName, error);
    }
}

QByteArray recipeText(const Recipe& recipe)
{
    QStringList values;
    for (size_t i = 0; i < recipe.tags.size(); ++i)
        values << tagValueText(recipe.tags[i], recipe.values[i]);
    return withValues(recipe.text, values);
}
