#include "api/recipeRoutes.h"

#include "api/namedLink.h"
#include "api/recipeRows.h"
#include "api/writeConsent.h"
#include "plan/tagText.h"
#include "values/jsonText.h"
#include "values/valueJson.h"

namespace {

/// The value of a row; empty: there is none.
QByteArray valueAt(const std::vector<QByteArray>& values, size_t row)
{
    return row < values.size() ? values[row] : QByteArray();
}

/// What an upload reads first is what its verification expects.
void appendDifferences(JsonText& json, const RecipeRequest& recipe, const RecipeEnd& end)
{
    const std::vector<QByteArray>& expected =
        recipe.kind == RecipeRequest::UPLOAD ? end.values : recipe.values;
    json.key("differences").beginArray();
    for (const RecipeEnd::Difference& difference : end.differences) {
        const Tag& row = recipe.rows[difference.row];
        json.beginObject().key("name").text(row.name);
        json.key("expected").raw(valueJson(row, valueAt(expected, difference.row)));
        json.key("found").raw(valueJson(row, difference.found)).endObject();
    }
    json.endArray();
}

void appendRows(JsonText& json, const RecipeRequest& recipe, const RecipeEnd& end)
{
    json.key("rows").beginArray();
    for (size_t at = 0; at < end.values.size() && at < recipe.rows.size(); ++at) {
        const Tag& row = recipe.rows[at];
        json.beginObject().key("name").text(row.name).key("station").integer(row.station);
        json.key("area").text(row.area).key("address").text(row.address);
        json.key("type").text(tagTypeText(row));
        json.key("value").raw(valueJson(row, end.values[at])).endObject();
    }
    json.endArray();
}

HttpResponse recipeResponse(const RecipeRequest& recipe, const RecipeEnd& end)
{
    JsonText json;
    json.beginObject().key("outcome").word(recipeOutcomeText(end.outcome));
    json.key("block").textOrNull(end.block);
    json.key("reason").textOrNull(end.reason);
    appendDifferences(json, recipe, end);
    appendRows(json, recipe, end);
    return jsonResponse(json.endObject().document());
}

/// What is not allowed is on the record, too.
void mustAllow(const HttpRequest& request, const MachineLink& link, const RecipeRequest& recipe,
               const StationParts& parts)
{
    try {
        mustAllowWrites(parts);
        mustBeWritableTags(recipe.rows, link.tags());
    } catch (const ApiError& error) {
        JobAudit& audit = parts.links.audit();
        audit.recipeRefused({audit.nextId(), link.name(), request.peer}, recipe,
                            QString::fromUtf8(error.what()));
        throw;
    }
}

/// @throws ApiError when the recipe is not handed to the link; otherwise the link's thread answers
void transfer(RecipeRequest::Kind kind, const HttpRequest& request, const HttpAnswer& answer,
              const StationParts& parts)
{
    const RecipeBody body = recipeBodyOf(request.body, kind, *parts.addresses);
    const std::shared_ptr<MachineLink> link = linkNamed(parts, body.link);
    if (kind == RecipeRequest::DOWNLOAD) mustAllow(request, *link, body.recipe, parts);
    link->transfer(body.recipe, request.peer, [answer, recipe = body.recipe](const RecipeEnd& end) {
        answer(recipeResponse(recipe, end));
    });
}

void addRoute(HttpRoutes& routes, const StationParts& parts, const char* path,
              RecipeRequest::Kind kind)
{
    routes.add("POST", path, [&parts, kind](const HttpRequest& request, const HttpAnswer& answer) {
        try {
            transfer(kind, request, answer, parts);
        } catch (const ApiError& error) {
            answer(responseTo(error));
        }
    });
}

} // namespace

void addRecipeRoutes(HttpRoutes& routes, const StationParts& parts)
{
    addRoute(routes, parts, "/api/v1/recipes/download", RecipeRequest::DOWNLOAD);
    addRoute(routes, parts, "/api/v1/recipes/upload", RecipeRequest::UPLOAD);
    addRoute(routes, parts, "/api/v1/recipes/compare", RecipeRequest::COMPARE);
}
