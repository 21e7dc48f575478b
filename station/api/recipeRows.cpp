#include "api/recipeRows.h"

#include "api/requestBody.h"
#include "plan/addressReason.h"
#include "plan/sharedMemory.h"
#include "plan/tagText.h"
#include "values/writtenValue.h"

#include <QJsonArray>
#include <QSet>

#include <algorithm>
#include <tuple>

namespace {

QString rowText(size_t row)
{
    return QLatin1String("row ") + QString::number(row + 1);
}

[[noreturn]] void refuse(const QString& row, const QString& problem)
{
    throw ApiError(ApiError::UNPROCESSABLE, row + QLatin1String(": ") + problem);
}

void mustBeEmpty(const QString& row, const QString& problem)
{
    if (!problem.isEmpty()) refuse(row, problem);
}

void takeName(Tag& tag, const QJsonObject& object, const QString& row)
{
    tag.name = textIn(object, "name", row);
    if (tag.name.isEmpty()) refuse(row, QLatin1String("the name is missing"));
}

void takeStation(Tag& tag, const QJsonObject& object, const QString& row)
{
    const QJsonValue station = object.value(QLatin1String("station"));
    if (!station.isDouble())
        throw ApiError(ApiError::BAD_REQUEST, row + QLatin1String(" has no number \"station\""));
    const QString text = QString::number(station.toDouble());
    if (!takeStation(text, tag)) refuse(row, stationProblem(text));
}

/// Where the row is and what it is.
void takePlace(Tag& tag, const QJsonObject& object, const QString& row, const DriverLibrary& driver)
{
    takeStation(tag, object, row);
    const QString type = textIn(object, "type", row);
    if (!takeType(type, tag)) refuse(row, typeProblem(type));
    const QString area = textIn(object, "area", row);
    if (!takeArea(area, tag, driver)) refuse(row, unknownAreaReason(area, driver));
    tag.address = textIn(object, "address", row);
    const QString typed = tag.area + tag.address;
    mustBeEmpty(row, kindProblem(tag));
    const QString problem = addressProblem(tag, driver);
    if (!problem.isEmpty()) refuse(row, typed + QLatin1String(": ") + problem);
    mustBeEmpty(row, writeProblem(tag, driver));
}

QByteArray valueOf(const Tag& tag, const QJsonObject& object, const QString& row)
{
    const QJsonValue value = object.value(QLatin1String("value"));
    if (value.isUndefined()) refuse(row, QLatin1String("the value is missing"));
    const std::variant<QByteArray, UnfitValue> bytes = writtenBytes(tag, value);
    if (const auto* const unfit = std::get_if<UnfitValue>(&bytes)) refuse(row, unfit->problem);
    return std::get<QByteArray>(bytes);
}

void takeRow(RecipeRequest& recipe, const QJsonValue& value, const DriverLibrary& driver)
{
    const QString number = rowText(recipe.rows.size());
    if (!value.isObject())
        throw ApiError(ApiError::BAD_REQUEST, number + QLatin1String(" is no JSON object"));
    const QJsonObject object = value.toObject();
    mustHaveOnly(object, {"name", "station", "area", "address", "type", "value"}, number);
    Tag tag;
    takeName(tag, object, number);
    const QString row = number + QLatin1Char(' ') + quoted(tag.name);
    takePlace(tag, object, row, driver);
    if (recipe.kind != RecipeRequest::UPLOAD) recipe.values.push_back(valueOf(tag, object, row));
    recipe.rows.push_back(tag);
}

void mustDiffer(const std::vector<Tag>& rows)
{
    QSet<QString> names;
    for (size_t row = 0; row < rows.size(); ++row) {
        if (names.contains(rows[row].name))
            refuse(rowText(row), QString(QLatin1String("an earlier row has the name %1"))
                                     .arg(quoted(rows[row].name)));
        names.insert(rows[row].name);
    }
    const std::vector<std::pair<size_t, size_t>> sharing = sharingTags(rows);
    if (sharing.empty()) return;
    refuse(rowText(sharing.front().second) + QLatin1Char(' ') +
               quoted(rows[sharing.front().second].name),
           QString(QLatin1String("it shares memory with %1 %2"))
               .arg(rowText(sharing.front().first), quoted(rows[sharing.front().first].name)));
}

bool takeVerify(const QJsonObject& object)
{
    const QJsonValue verify = object.value(QLatin1String("verify"));
    if (!verify.isUndefined() && !verify.isBool())
        throw ApiError(ApiError::BAD_REQUEST,
                       QLatin1String("\"verify\" is neither true nor false"));
    return verify.toBool();
}

auto placeOf(const Tag& tag)
{
    return std::tie(tag.station, tag.area, tag.number, tag.type, tag.wordOrder);
}

} // namespace

RecipeBody recipeBodyOf(const QByteArray& body, RecipeRequest::Kind kind,
                        const DriverLibrary& driver)
{
    const QString what = QLatin1String("the request");
    const QJsonObject object = requestObject(body, {"link", "rows", "verify"});
    RecipeBody read;
    read.link = textIn(object, "link", what);
    read.recipe.kind = kind;
    read.recipe.verify = takeVerify(object);
    const QJsonValue rows = object.value(QLatin1String("rows"));
    if (!rows.isArray())
        throw ApiError(ApiError::BAD_REQUEST, QLatin1String("the request has no array \"rows\""));
    for (const QJsonValue row : rows.toArray())
        takeRow(read.recipe, row, driver);
    if (read.recipe.rows.empty())
        throw ApiError(ApiError::UNPROCESSABLE, QLatin1String("the recipe has no rows"));
    mustDiffer(read.recipe.rows);
    return read;
}

void mustBeWritableTags(const std::vector<Tag>& rows, const std::vector<Tag>& tags)
{
    for (size_t row = 0; row < rows.size(); ++row) {
        const bool isWritable = std::any_of(tags.begin(), tags.end(), [&](const Tag& tag) {
            return tag.access == Tag::READ_WRITE && placeOf(tag) == placeOf(rows[row]);
        });
        if (isWritable) continue;
        throw ApiError(ApiError::READ_ONLY,
                       QString(QLatin1String("%1 %2: no tag of the link with access \"rw\" has its "
                                             "place and type"))
                           .arg(rowText(row), quoted(rows[row].name)));
    }
}
