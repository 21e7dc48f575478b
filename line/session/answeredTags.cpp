#include "session/answeredTags.h"

#include "plan/sharedMemory.h"

#include <algorithm>
#include <tuple>

namespace {

enum { LONGEST_TAG = 2 * MemoryRun::REGISTER_BITS, BYTE_BITS = 8, BYTE_MASK = 0xFF };

QByteArray requestOf(const FRAME_PRO& frame)
{
    return QByteArray::fromRawData(reinterpret_cast<const char*>(frame.sendBuf), frame.sendLen);
}

} // namespace

void AnsweredTags::set(const std::vector<Tag>& tags)
{
    m_spans.clear();
    for (size_t i = 0; i < tags.size(); ++i) {
        const Tag& tag = tags[i];
        const MemoryRun::Table table =
            tag.area.startsWith(QLatin1Char('I')) ? MemoryRun::INPUT : MemoryRun::HOLDING;
        int from = tag.number * MemoryRun::REGISTER_BITS;
        int bits = tag.units() * MemoryRun::REGISTER_BITS;
        if (tag.isBit()) {
            const WordBit place = wordBitOf(tag.area, tag.number);
            from = place.number * MemoryRun::REGISTER_BITS + place.bit;
            bits = 1;
        }
        m_spans.push_back({tag.station, table, from, from + bits, int(i), tag.isBit()});
    }
    std::sort(m_spans.begin(), m_spans.end(), [](const Span& a, const Span& b) {
        return std::tie(a.station, a.table, a.from, a.tag) <
               std::tie(b.station, b.table, b.from, b.tag);
    });
}

/// No tag that begins further ahead reaches into the run.
std::vector<AnsweredTags::Span>::const_iterator
AnsweredTags::firstTouched(const MemoryRun& run) const
{
    const int from = run.from - LONGEST_TAG;
    return std::lower_bound(m_spans.begin(), m_spans.end(), std::tie(run.station, run.table, from),
                            [](const Span& span, const auto& place) {
                                return std::tie(span.station, span.table, span.from) < place;
                            });
}

bool AnsweredTags::isTouched(const Span& span, const MemoryRun& run)
{
    return span.from < run.until && span.until > run.from;
}

void AnsweredTags::tell(const FINISHED_EXCHANGE& finished)
{
    if (finished.result != REPLY_ACCEPTED || m_spans.empty()) return;
    const MemoryRun run = memoryShownBy(requestOf(finished.frame), finished.reply);
    for (auto span = firstTouched(run); span != m_spans.end(); ++span) {
        if (span->station != run.station || span->table != run.table || span->from >= run.until)
            return;
        if (span->from < run.from || span->until > run.until) continue;
        takeBytes(*span, run);
        m_sink.tagRead(span->tag, m_bytes, finished.asOf);
    }
}

/// The bytes in the format of intf_getData. The buffer is kept: thousands of tags pass each second.
void AnsweredTags::takeBytes(const Span& span, const MemoryRun& run)
{
    const int bits = span.until - span.from;
    m_bytes.resize(span.isBit ? 1 : bits / BYTE_BITS);
    char* out = m_bytes.data();
    if (span.isBit) {
        *out = char(run.bit(span.from));
        return;
    }
    for (int at = span.from; at < span.until; at += MemoryRun::REGISTER_BITS) {
        const int word = run.word(at);
        *out++ = char(word & BYTE_MASK);
        *out++ = char(word >> BYTE_BITS);
    }
}

AnsweredTags::Touched AnsweredTags::touchedBy(const FRAME_PRO& write) const
{
    const MemoryRun run = memoryShownBy(requestOf(write), QByteArray());
    Touched touched = NO_TAG;
    for (auto span = firstTouched(run); span != m_spans.end(); ++span) {
        if (span->station != run.station || span->table != run.table || span->from >= run.until)
            break;
        if (!isTouched(*span, run)) continue;
        if (span->from < run.from || span->until > run.until) return PARTS_OF_TAGS;
        touched = WHOLE_TAGS;
    }
    return touched;
}
