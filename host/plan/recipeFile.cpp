#include "plan/recipeFile.h"

#include "plan/tagText.h"
#include "plan/tagValue.h"

#include <QSaveFile>

namespace {

enum { BIT_VARIABLE = -1, WORD_VARIABLE = 0, WRITING = 1 };

bool isReadOnly(const Tag& tag, const DriverLibrary& driver)
{
    int number = 0;
    return driver.checkAddr(tag.area, tag.address, number,
                            tag.isBit() ? BIT_VARIABLE : WORD_VARIABLE, tag.units(),
                            WRITING) == ADDRESS_READ_ONLY;
}

QString csvField(const QString& text)
{
    const bool plain = !text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) &&
                       !text.contains(QLatin1Char('\n')) && !text.startsWith(QLatin1Char('#')) &&
                       text == text.trimmed();
    if (plain) return text;
    QString doubled = text;
    doubled.replace(QLatin1String("\""), QLatin1String("\"\""));
    return QLatin1Char('"') + doubled + QLatin1Char('"');
}

QString csvLine(const Tag& tag, const QByteArray& value)
{
    const QStringList fields = {
        tag.name,         QString::number(tag.station),
        tag.area,         tag.address,
        tagTypeText(tag), value.isEmpty() ? QString() : tagValueText(tag, value),
        tag.comment};
    QStringList quoted;
    for (const QString& field : fields)
        quoted << csvField(field);
    return quoted.join(QLatin1String(","));
}

} // namespace

Recipe readRecipeFile(const QString& fileName, const DriverLibrary& driver, bool valuesNeeded)
{
    Recipe recipe;
    const ValueJudge judge = [&](const Tag& tag, const QString& text) -> QString {
        recipe.values.push_back(QByteArray());
        if (isReadOnly(tag, driver))
            return QString(QLatin1String("area %1 is read-only")).arg(tag.area);
        if (text.isEmpty()) return QLatin1String(valuesNeeded ? "the value is missing" : "");
        const std::optional<QByteArray> bytes = tagValueBytes(tag, text);
        if (!bytes)
            return QString(QLatin1String("\"%1\" is no value of type %2"))
                .arg(text, tagTypeText(tag));
        recipe.values.back() = *bytes;
        return QString();
    };
    recipe.tags = readTags(fileBytes(fileName), driver, judge);
    if (recipe.tags.empty()) throw TagFileError("the recipe has no values");
    return recipe;
}

void writeRecipeFile(const QString& fileName, const Recipe& recipe)
{
    QStringList lines(QLatin1String("name,station,area,address,type,value,comment"));
    for (size_t i = 0; i < recipe.tags.size(); ++i)
        lines << csvLine(recipe.tags[i], recipe.values[i]);
    QSaveFile file(fileName);
    const QByteArray bytes = (lines.join(QLatin1String("\n")) + QLatin1Char('\n')).toUtf8();
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return;
    throw TagFileError(QString(QLatin1String("cannot write %1: %2"))
                           .arg(fileName, file.errorString())
                           .toStdString());
}
