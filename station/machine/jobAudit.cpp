#include "machine/jobAudit.h"

#include "plan/printableText.h"
#include "values/jsonText.h"
#include "values/valueJson.h"

#include <QDateTime>

#include <utility>

namespace {

QByteArray timeText(qint64 time)
{
    return QDateTime::fromMSecsSinceEpoch(time).toUTC().toString(Qt::ISODateWithMs).toLatin1();
}

QByteArray quoted(const QString& name)
{
    return JsonText().text(printableText(name)).document();
}

QByteArray plain(const QString& text)
{
    return printableText(text).toUtf8();
}

/// An address has no blank: what has one holds names.
QByteArray senderText(const QString& from)
{
    return from.contains(QLatin1Char(' ')) ? quoted(from) : plain(from);
}

QByteArray writeText(const JobAsked& asked, const QString& tag)
{
    return "write " + QByteArray::number(asked.id) + " of " + quoted(asked.link) + ' ' +
           quoted(tag);
}

QByteArray writeDocument(const JobAsked& asked, const Tag& tag, const QByteArray& value,
                         const WriteEnd& end)
{
    JsonText json;
    json.beginObject().key("id").integer(qint64(asked.id)).key("link").text(asked.link);
    json.key("tag").text(tag.name).key("value").raw(valueJson(tag, value));
    writeOutcome(json, end.outcome, end.reason);
    json.key("held").raw(valueJson(tag, end.held.bytes)).endObject();
    return json.document();
}

JsonText& beginRecipe(JsonText& json, const JobAsked& asked, RecipeRequest::Kind kind)
{
    json.beginObject().key("id").integer(qint64(asked.id)).key("link").text(asked.link);
    return json.key("kind").word(recipeKindText(kind));
}

QByteArray recipeDocument(const JobAsked& asked, const RecipeRequest& request, const RecipeEnd& end)
{
    JsonText json;
    beginRecipe(json, asked, request.kind);
    json.key("outcome").word(recipeOutcomeText(end.outcome));
    json.key("block").textOrNull(end.block);
    json.key("reason").textOrNull(end.reason);
    json.key("rows").integer(qint64(request.rows.size()));
    json.key("differences").integer(qint64(end.differences.size())).endObject();
    return json.document();
}

QByteArray recipeText(const JobAsked& asked, const RecipeRequest& request)
{
    return "recipe " + QByteArray::number(asked.id) + " of " + quoted(asked.link) + ", " +
           recipeKindText(request.kind) + " of " + QByteArray::number(int(request.rows.size())) +
           " values";
}

QByteArray outcomeOf(const Tag& tag, const WriteEnd& end)
{
    QByteArray text = writeOutcomeText(end.outcome);
    if (!end.reason.isEmpty()) text += ": " + plain(end.reason);
    return text + ", it holds " + valueJson(tag, end.held.bytes);
}

QByteArray outcomeOf(const RecipeEnd& end)
{
    QByteArray text = recipeOutcomeText(end.outcome);
    if (!end.block.isEmpty()) text += " at " + plain(end.block);
    if (!end.reason.isEmpty()) text += ": " + plain(end.reason);
    if (!end.differences.empty())
        text += ", " + QByteArray::number(int(end.differences.size())) + " values differ";
    return text;
}

} // namespace

JobAudit::JobAudit(StationEvents& events, const StationClock& clock, PutLine putLine)
    : m_events(events), m_clock(clock), m_putLine(std::move(putLine))
{
}

void JobAudit::writeEnded(const JobAsked& asked, const Tag& tag, const QByteArray& value,
                          const WriteEnd& end)
{
    ++m_writes[end.outcome];
    const qint64 time = m_clock.wall();
    put(time, asked.from, writeText(asked, tag.name) + " = " + valueJson(tag, value),
        outcomeOf(tag, end));
    m_events.add(StationEvent::WRITE, time, writeDocument(asked, tag, value, end));
}

void JobAudit::recipeProgress(const JobAsked& asked, RecipeRequest::Kind kind, int done, int blocks)
{
    JsonText json;
    beginRecipe(json, asked, kind).key("done").integer(done).key("blocks").integer(blocks);
    m_events.add(StationEvent::RECIPE, m_clock.wall(), json.endObject().document());
}

void JobAudit::recipeEnded(const JobAsked& asked, const RecipeRequest& request,
                           const RecipeEnd& end)
{
    const qint64 time = m_clock.wall();
    put(time, asked.from, recipeText(asked, request), outcomeOf(end));
    m_events.add(StationEvent::RECIPE, time, recipeDocument(asked, request, end));
}

void JobAudit::simulatorEnded(const QString& link)
{
    m_putLine(timeText(m_clock.wall()) + " link " + quoted(link) +
              ": the simulated PLC has ended, it is started again");
}

void JobAudit::writeRefused(const JobAsked& asked, const QString& tag, const QString& reason)
{
    put(m_clock.wall(), asked.from, writeText(asked, tag), "refused: " + plain(reason));
}

void JobAudit::recipeRefused(const JobAsked& asked, const RecipeRequest& request,
                             const QString& reason)
{
    put(m_clock.wall(), asked.from, recipeText(asked, request), "refused: " + plain(reason));
}

void JobAudit::refused(const QString& from, const QString& what, const QString& reason)
{
    put(m_clock.wall(), from, "command " + quoted(what), "refused: " + plain(reason));
}

void JobAudit::put(qint64 time, const QString& from, const QByteArray& what,
                   const QByteArray& outcome)
{
    m_putLine(timeText(time) + " from " + senderText(from) + ": " + what + ": " + outcome);
}
