#include "verbs/diffVerb.h"

#include "plan/memoryDump.h"
#include "plan/recipeFile.h"
#include "program/printing.h"
#include "verbs/difference.h"
#include "verbs/memoryWords.h"
#include "verbs/readOnce.h"
#include "verbs/tagChoice.h"

namespace {

enum { BYTE_BITS = 8, BYTE_MASK = 0xFF };

/// What the file says of the PLC.
struct ExpectedValues
{
    std::vector<Tag> tags;
    std::vector<QByteArray> values; ///< by tag, in the format of intf_getData
};

QByteArray bytesOf(int word)
{
    QByteArray bytes;
    bytes.append(char(word & BYTE_MASK));
    bytes.append(char(word >> BYTE_BITS & BYTE_MASK));
    return bytes;
}

/// Words that were read have the value 0 when the dump has no line for them.
ExpectedValues expectedOf(MemoryDump dump, const DriverLibrary& driver)
{
    for (const MemoryDump::Words& words : dump.read) {
        for (int number = words.first; number <= words.last; ++number)
            dump.words.emplace(MemoryDump::Place(words.station, words.area, number), 0);
    }
    ExpectedValues expected;
    for (const auto& [place, value] : dump.words) {
        expected.tags.push_back(wordTag(place, driver));
        expected.values.push_back(bytesOf(value));
    }
    return expected;
}

ExpectedValues expectedIn(const QString& fileName, const DriverLibrary& driver)
{
    const QByteArray text = fileBytes(fileName);
    if (!isMemoryDump(text)) {
        const Recipe recipe = readRecipeFile(fileName, driver, FOR_DOWNLOAD_WITH_NAN);
        return {recipe.tags, recipe.values};
    }
    const ExpectedValues expected = expectedOf(readMemoryDump(text, fileName), driver);
    if (expected.tags.empty())
        throw TagFileError(fileName.toStdString() + ": the dump has no words");
    return expected;
}

struct Counts
{
    int values = 0;
    int different = 0;
    int unread = 0;
};

Counts compare(HostProgram& host, const ExpectedValues& expected,
               const std::vector<TagState>& states, bool json)
{
    Counts counts;
    for (size_t i = 0; i < states.size(); ++i) {
        ++counts.values;
        if (!states[i].good) {
            ++counts.unread;
            host.tell(labelText(expected.tags[i]) + QLatin1String(": ") + states[i].trouble);
        } else if (states[i].bytes != expected.values[i]) {
            ++counts.different;
            printDifference(expected.tags[i], expected.values[i], states[i].bytes, json);
        }
    }
    return counts;
}

void print(const Counts& counts, bool json)
{
    if (json) {
        QJsonObject object;
        object.insert(QLatin1String("values"), counts.values);
        object.insert(QLatin1String("different"), counts.different);
        object.insert(QLatin1String("unread"), counts.unread);
        return printObject(stdout, object);
    }
    const int equal = counts.values - counts.different - counts.unread;
    const QString unread = QString(QLatin1String(", %1 could not be read")).arg(counts.unread);
    printLine(stdout, QString(QLatin1String("%1 of %2 values are equal%3"))
                          .arg(QString::number(equal), QString::number(counts.values),
                               counts.unread > 0 ? unread : QString()));
}

ExitStatus diff(HostProgram& host, const ExpectedValues& expected, bool json)
{
    const ReadOnce read = readOnce(host);
    if (read.end.outcome == JobEnd::LOST) host.mustBeDone(read.end);
    const Counts counts = compare(host, expected, read.tags, json);
    print(counts, json);
    if (counts.unread > 0) return host.statusOf(read.end.outcome);
    return counts.different > 0 ? EXIT_VERIFY : EXIT_DONE;
}

} // namespace

ExitStatus compareWithFile(const DriverLibrary& driver, const LinkOptions& options,
                           const QString& fileName)
{
    const ExpectedValues expected = expectedIn(fileName, driver);
    HostProgram host(driver, options, expected.tags, LinkRun::ON_REQUEST);
    return host.run([&] { return diff(host, expected, options.json); });
}
