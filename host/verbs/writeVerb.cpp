#include "verbs/writeVerb.h"

#include "output/changeLines.h"
#include "plan/recipePlan.h"
#include "plan/sharedMemory.h"
#include "plan/tagText.h"
#include "plan/tagValue.h"
#include "plan/writeGroups.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace {

enum { BYTES_PER_WORD = 2 };

VerbFailure usageError(const QString& text, const QString& problem)
{
    return VerbFailure(EXIT_USAGE, text + QLatin1String(": ") + problem);
}

std::vector<ElementWrite> elementsOf(const Assignment& assigned)
{
    std::vector<ElementWrite> elements;
    const Tag& tag = assigned.tag;
    const int bytes = tag.isBit() ? 1 : int(BYTES_PER_WORD);
    for (int unit = 0; unit < tag.units(); ++unit) {
        ElementWrite write;
        write.station = tag.station;
        write.area = tag.area;
        write.number = tag.number + unit;
        write.bytes = assigned.bytes.mid(unit * bytes, bytes);
        write.label = labelText(tag);
        elements.push_back(write);
    }
    return elements;
}

/// Refuses two values for the same memory: the first value would be lost without a message.
void mustNotShare(const std::vector<Tag>& tags)
{
    const auto sharing = sharingTags(tags);
    if (sharing.empty()) return;
    const Tag& first = tags[sharing.front().first];
    const Tag& second = tags[sharing.front().second];
    if (first.area == second.area && first.number == second.number)
        throw usageError(labelText(second), QLatin1String("is written twice"));
    throw usageError(labelText(second), QLatin1String("shares memory with ") + labelText(first) +
                                            QLatin1String(", which is written as well"));
}

void print(const Assignment& assigned, bool json)
{
    if (!json) {
        std::printf("%s = %s confirmed\n", qUtf8Printable(labelText(assigned.tag)),
                    qUtf8Printable(tagValueText(assigned.tag, assigned.bytes)));
        return;
    }
    QJsonObject object;
    object.insert(QLatin1String("name"), assigned.tag.name);
    object.insert(QLatin1String("address"), placeText(assigned.tag));
    object.insert(QLatin1String("value"), jsonValue(tagValueText(assigned.tag, assigned.bytes)));
    object.insert(QLatin1String("confirmed"), true);
    std::printf("%s\n", QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
}

/// Position of the "=" behind the name. Addresses and values contain no "=", but names of a tag
/// file may.
int equalsBehindName(const QString& text, const TagChoice& tags)
{
    const QLatin1Char equals('=');
    for (int at = int(text.lastIndexOf(equals)); at > 0;
         at = int(text.lastIndexOf(equals, at - 1))) {
        if (tags.isNameOfFile(text.left(at))) return at;
    }
    return int(text.indexOf(equals));
}

/// Hands in the job that writes a group.
void start(HostProgram& host, int job, const WriteGroup& group,
           const std::vector<Assignment>& assignments)
{
    if (!group.isOneFrame)
        return host.link().write(job, elementsOf(assignments[group.tags.front()]));
    std::vector<Tag> tags;
    std::vector<QByteArray> values;
    for (const size_t index : group.tags) {
        tags.push_back(assignments[index].tag);
        values.push_back(assignments[index].bytes);
    }
    const RecipePlan plan(tags, StartedDriver::LINK_NUMBER);
    RecipeJob recipe;
    recipe.job = job;
    recipe.flag = RECIPE_DOWNLOAD_FLAG;
    recipe.records = plan.downloadRecords();
    recipe.values = plan.buffer(values);
    host.link().transfer(recipe);
}

/// Hands in all writes.
/// @return the job of each assignment
std::vector<int> startAll(HostProgram& host, const std::vector<Assignment>& assignments)
{
    std::vector<Tag> tags;
    for (const Assignment& assigned : assignments)
        tags.push_back(assigned.tag);
    std::vector<int> jobs(assignments.size());
    for (const WriteGroup& group : writeGroups(tags)) {
        const int job = host.newJob();
        for (const size_t index : group.tags)
            jobs[index] = job;
        start(host, job, group, assignments);
    }
    return jobs;
}

/// Writes the values and prints for each value, in the command's order, whether it is confirmed.
/// @return the status of the first failure
ExitStatus write(HostProgram& host, const std::vector<Assignment>& assignments, bool json)
{
    host.connect();
    const std::vector<int> jobs = startAll(host, assignments);
    ExitStatus status = EXIT_DONE;
    for (size_t i = 0; i < jobs.size(); ++i) {
        const JobEnd end = host.endOf(jobs[i]);
        if (end.outcome == JobEnd::DONE) {
            print(assignments[i], json);
            continue;
        }
        host.tell(labelText(assignments[i].tag) + QLatin1String(": ") + end.reason);
        if (status == EXIT_DONE) status = host.statusOf(end.outcome);
    }
    return status;
}

} // namespace

Assignment assignment(const QString& text, const TagChoice& tags, const DriverLibrary& driver)
{
    const int equals = equalsBehindName(text, tags);
    if (equals < 1) throw usageError(text, QLatin1String("is not NAME=VALUE"));
    Assignment made;
    made.tag = tags.named(text.left(equals));
    made.text = text.mid(equals + 1);
    const std::optional<QByteArray> bytes = tagValueBytes(made.tag, made.text);
    if (!bytes) throw usageError(text, QLatin1String("the value does not fit the tag's type"));
    const QString problem = writeProblem(made.tag, driver);
    if (!problem.isEmpty()) throw usageError(text, problem);
    made.bytes = *bytes;
    return made;
}

ExitStatus writeTags(const DriverLibrary& driver, const LinkOptions& options,
                     const std::vector<Assignment>& assignments)
{
    std::vector<Tag> tags;
    for (const Assignment& assigned : assignments)
        tags.push_back(assigned.tag);
    mustNotShare(tags);
    HostProgram host(driver, options, tags, LinkRun::ON_REQUEST);
    return host.run([&] { return write(host, assignments, options.json); });
}
