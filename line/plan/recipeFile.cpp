#include "plan/recipeFile.h"

#include "plan/tagText.h"
#include "plan/tagValue.h"

#include <QStringList>

Recipe readRecipeFile(const QString& fileName, const DriverLibrary& driver, bool valuesNeeded)
{
    Recipe recipe;
    const ValueJudge judge = [&](const Tag& tag, const QString& text) -> QString {
        recipe.values.push_back(QByteArray());
        const QString problem = writeProblem(tag, driver);
        if (!problem.isEmpty()) return problem;
        if (text.isEmpty()) return QLatin1String(valuesNeeded ? "the value is missing" : "");
        const std::optional<QByteArray> bytes = tagValueBytes(tag, text);
        if (!bytes)
            return QString(QLatin1String("\"%1\" is no value of type %2"))
                .arg(text, tagTypeText(tag));
        recipe.values.back() = *bytes;
        return QString();
    };
    recipe.text = fileBytes(fileName);
    recipe.tags = readTags(recipe.text, driver, judge);
    if (recipe.tags.empty()) throw TagFileError("the recipe has no values");
    return recipe;
}

QByteArray recipeText(const Recipe& recipe)
{
    QStringList values;
    for (size_t i = 0; i < recipe.tags.size(); ++i)
        values << tagValueText(recipe.tags[i], recipe.values[i]);
    return withValues(recipe.text, values);
}
