#include "verbs/writeVerb.h"

#include "output/changeLines.h"
#include "plan/tagValue.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>
#include <set>
#include <tuple>

namespace {

enum { BIT_VARIABLE = -1, WORD_VARIABLE = 0, WRITING = 1, BYTES_PER_WORD = 2 };

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

/// Of two values for one place only the last would be left, and nothing would say so.
void mustNotShare(const std::vector<Assignment>& assignments)
{
    std::set<std::tuple<int, QString, int>> places;
    for (const Assignment& assigned : assignments) {
        for (const ElementWrite& element : elementsOf(assigned)) {
            if (!places.emplace(element.station, element.area, element.number).second)
                throw usageError(labelText(assigned.tag), QLatin1String("is written twice"));
        }
    }
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

} // namespace

bool isWritable(const Tag& tag, const DriverLibrary& driver)
{
    int number = 0;
    return driver.checkAddr(tag.area, tag.address, number,
                            tag.isBit() ? BIT_VARIABLE : WORD_VARIABLE, tag.units(),
                            WRITING) == ADDRESS_VALID;
}

Assignment assignment(const QString& text, const TagChoice& tags, const DriverLibrary& driver)
{
    const int equals = int(text.indexOf(QLatin1Char('=')));
    if (equals < 1) throw usageError(text, QLatin1String("is not NAME=VALUE"));
    Assignment made;
    made.tag = tags.named(text.left(equals));
    made.text = text.mid(equals + 1);
    const std::optional<QByteArray> bytes = tagValueBytes(made.tag, made.text);
    if (!bytes) throw usageError(text, QLatin1String("the value does not fit the tag's type"));
    if (!isWritable(made.tag, driver))
        throw usageError(text, QString(QLatin1String("area %1 is read-only")).arg(made.tag.area));
    made.bytes = *bytes;
    return made;
}

ExitStatus writeOnce(const DriverLibrary& driver, const LinkOptions& options,
                     const std::vector<Assignment>& assignments)
{
    mustNotShare(assignments);
    std::vector<Tag> tags;
    for (const Assignment& assigned : assignments)
        tags.push_back(assigned.tag);
    LiveHost host(driver, options, tags, false);
    host.connect();
    std::vector<int> jobs;
    for (const Assignment& assigned : assignments) {
        jobs.push_back(host.newJob());
        host.communication().write(jobs.back(), elementsOf(assigned));
    }
    std::vector<JobEnd> failures;
    for (size_t i = 0; i < jobs.size(); ++i) {
        const JobEnd end = host.endOf(jobs[i]);
        if (end.outcome == JobEnd::DONE)
            print(assignments[i], options.json);
        else
            failures.push_back(end);
    }
    for (size_t i = 1; i < failures.size(); ++i)
        std::fprintf(stderr, "kakb-host: %s\n", qUtf8Printable(failures[i].trouble));
    if (!failures.empty()) mustBeDone(failures.front());
    return EXIT_DONE;
}
