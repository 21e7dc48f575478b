#include "plan/recipeFile.h"

#include "plan/tagText.h"
#include "plan/tagValue.h"

#include <QSaveFile>

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

void writeRecipeFile(const QString& fileName, const Recipe& recipe)
{
    QStringList values;
    for (size_t i = 0; i < recipe.tags.size(); ++i)
        values << tagValueText(recipe.tags[i], recipe.values[i]);
    const QByteArray bytes = withValues(recipe.text, values);
    QSaveFile file(fileName);
    // commit() takes no notice of a failure to write what is still buffered, as on a full disk.
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush() &&
        file.commit())
        return;
    throw TagFileError(QString(QLatin1String("cannot write %1: %2"))
                           .arg(fileName, file.errorString())
                           .toStdString());
}
