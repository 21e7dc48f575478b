#include "verbs/writeVerb.h"

#include "plan/tagValue.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace {

enum { BIT_VARIABLE = -1, WORD_VARIABLE = 0, WRITING = 1, BYTES_PER_WORD = 2 };

VerbFailure usageError(const QString& text, const QString& problem)
{
    return VerbFailure(EXIT_USAGE, text + QLatin1String(": ") + problem);
}

void addElements(const Assignment& assigned, std::vector<ElementWrite>& elements)
{
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
    object.insert(QLatin1String("value"), tagValueText(assigned.tag, assigned.bytes));
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
    std::vector<Tag> tags;
    std::vector<ElementWrite> elements;
    for (const Assignment& assigned : assignments) {
        tags.push_back(assigned.tag);
        addElements(assigned, elements);
    }
    LiveHost host(driver, options, tags, false);
    host.connect();
    const int job = host.newJob();
    host.communication().write(job, elements);
    host.await(job);
    for (const Assignment& assigned : assignments)
        print(assigned, options.json);
    return EXIT_DONE;
}
