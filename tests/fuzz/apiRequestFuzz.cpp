// What a client sends to the resident station's API: the bodies of writes and recipes, and the
// queries of the history. Whatever comes, it is refused in one sentence, or what was made of it
// fits the driver.

#include "api/apiError.h"
#include "api/historySpan.h"
#include "api/recipeRows.h"
#include "api/writeRequest.h"
#include "plan/tagText.h"
#include "plan/tagValue.h"
#include "values/writtenValue.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>

namespace {

const qint64 NOW = 1700000000000;

void mustHold(bool holds, const char* rule)
{
    if (holds) return;
    std::fprintf(stderr, "rule broken: %s\n", rule);
    std::abort();
}

const DriverLibrary& driver()
{
    static const DriverLibrary loaded(QString::fromUtf8(KAKB_DRIVER_FILE));
    return loaded;
}

void mustBeBytesOf(const Tag& tag, const QByteArray& bytes)
{
    mustHold(bytes.size() == (tag.isBit() ? 1 : 2 * tag.units()), "bytes of the tag's size");
    const std::optional<QByteArray> again = tagValueBytes(tag, tagValueText(tag, bytes));
    const bool isNegativeZero =
        tag.type == Tag::FLOAT32 && tagValueText(tag, bytes) == QLatin1String("0");
    mustHold(isNegativeZero || again == bytes, "bytes of a value of the tag");
}

void write(const QByteArray& body, Tag::Type type)
{
    const WriteRequest request = writeRequestOf(body);
    Tag tag;
    tag.type = type;
    const std::variant<QByteArray, UnfitValue> written = writtenBytes(tag, request.value);
    if (const auto* const unfit = std::get_if<UnfitValue>(&written))
        mustHold(!unfit->problem.isEmpty(), "a reason for what does not fit");
    else
        mustBeBytesOf(tag, std::get<QByteArray>(written));
}

void transfer(const QByteArray& body, RecipeRequest::Kind kind)
{
    const RecipeRequest recipe = recipeBodyOf(body, kind, driver()).recipe;
    const size_t values = kind == RecipeRequest::UPLOAD ? 0 : recipe.rows.size();
    mustHold(!recipe.rows.empty() && recipe.values.size() == values, "a value for each row");
    for (size_t row = 0; row < recipe.rows.size(); ++row) {
        const Tag& tag = recipe.rows[row];
        mustHold(tag.station >= 1 && tag.station <= 247 && !tag.name.isEmpty(), "a valid row");
        mustHold(writeProblem(tag, driver()).isEmpty(), "rows that can be written");
        if (row < values) mustBeBytesOf(tag, recipe.values[row]);
    }
}

void query(FuzzedDataProvider& input)
{
    HttpRequest request;
    for (const char* const key : {"from", "to", "points"}) {
        if (input.ConsumeBool())
            request.query.emplace_back(
                key, QByteArray::fromStdString(input.ConsumeRandomLengthString(24)));
    }
    const HistorySpan span = historySpanOf(request, NOW);
    mustHold(span.from >= 0 && span.from < span.until, "a span with an end behind its begin");
    mustHold(span.points >= 1 && span.points <= HistorySpan::MOST_POINTS, "points in their range");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    const int what = input.ConsumeIntegralInRange<int>(0, 2);
    const int which = input.ConsumeIntegralInRange<int>(0, 5);
    try {
        if (what == 0) {
            query(input);
        } else {
            const QByteArray body =
                QByteArray::fromStdString(input.ConsumeRemainingBytesAsString());
            if (what == 1)
                write(body, static_cast<Tag::Type>(which));
            else
                transfer(body, static_cast<RecipeRequest::Kind>(which % 3));
        }
    } catch (const ApiError& error) {
        mustHold(error.what()[0] != '\0', "a refusal in words");
        mustHold(error.status >= 400 && error.status < 500, "a refusal that blames the client");
    }
    return 0;
}
