#include "verbs/dumpVerb.h"

#include "plan/memoryDump.h"
#include "program/resultFile.h"
#include "verbs/readOnce.h"

namespace {

int wordOf(const QByteArray& bytes)
{
    enum { BYTE_BITS = 8 };
    const int low = static_cast<unsigned char>(bytes.at(0));
    const int high = static_cast<unsigned char>(bytes.at(1));
    return low | high << BYTE_BITS;
}

/// Whether a word continues the words before it.
bool continues(const MemoryDump::Words& words, const Tag& tag)
{
    return words.station == tag.station && words.area == tag.area && words.last + 1 == tag.number;
}

MemoryDump dumpOf(const std::vector<Tag>& tags, const std::vector<TagState>& states)
{
    MemoryDump dump;
    for (size_t i = 0; i < tags.size(); ++i) {
        if (!states[i].good) continue;
        const Tag& tag = tags[i];
        if (dump.read.empty() || !continues(dump.read.back(), tag))
            dump.read.push_back({tag.station, tag.area, tag.number, tag.number});
        dump.read.back().last = tag.number;
        dump.words[MemoryDump::Place(tag.station, tag.area, tag.number)] = wordOf(states[i].bytes);
    }
    return dump;
}

/// A sentence for each run of words that could not be read, with its reason.
QStringList unreadWords(const std::vector<Tag>& tags, const std::vector<TagState>& states)
{
    QStringList sentences;
    for (size_t first = 0; first < tags.size();) {
        size_t end = first + 1;
        while (end < tags.size() && !states[first].good && !states[end].good &&
               states[end].trouble == states[first].trouble &&
               tags[end].station == tags[first].station && tags[end].area == tags[first].area)
            ++end;
        if (!states[first].good) {
            const QString last =
                end - first > 1 ? QLatin1String("..") + tags[end - 1].name : QString();
            sentences << tags[first].name + last + QLatin1String(": ") + states[first].trouble;
        }
        first = end;
    }
    return sentences;
}

void write(const QString& fileName, const QByteArray& text)
{
    if (fileName.isEmpty()) {
        std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
        return;
    }
    writeResult(fileName, text);
}

ExitStatus dump(HostProgram& host, const std::vector<Tag>& tags, const QString& fileName)
{
    const ReadOnce read = readOnce(host);
    const MemoryDump words = dumpOf(tags, read.tags);
    if (words.read.empty()) host.mustBeDone(read.end);
    QByteArray text = memoryDumpText(words);
    for (const QString& sentence : unreadWords(tags, read.tags)) {
        text += "# not read: " + sentence.toUtf8() + '\n';
        host.tell(sentence);
    }
    write(fileName, text);
    return read.end.outcome == JobEnd::DONE ? EXIT_DONE : host.statusOf(read.end.outcome);
}

} // namespace

ExitStatus dumpMemory(const DriverLibrary& driver, const LinkOptions& options,
                      const std::vector<Tag>& tags, const QString& fileName)
{
    HostProgram host(driver, options, tags, LinkRun::ON_REQUEST);
    return host.run([&] { return dump(host, tags, fileName); });
}
