#include "verbs/csvOutput.h"

#include "output/figuresText.h"
#include "plan/csvText.h"
#include "plan/tagValue.h"
#include "program/printing.h"
#include "verbs/watchRows.h"
#include "wire/timeUnits.h"

#include <algorithm>
#include <cstdio>

CsvOutput::CsvOutput(const std::vector<Tag>& tags, qint64 interval)
    : m_tags(tags), m_interval(interval)
{
    QStringList names{QLatin1String("time")};
    for (const Tag& tag : tags)
        names << csvField(tag.name);
    printLine(stdout, names.join(QLatin1Char(',')));
    std::fflush(stdout);
}

/// Wakes at the next line.
News CsvOutput::wait(HostProgram& host, int ms)
{
    if (!m_start) m_start = host.link().now();
    const qint64 due = m_next.value_or(*m_start + m_interval);
    const qint64 left = std::max<qint64>(due - host.link().now(), 0) / MILLISECOND;
    return host.next(int(std::min<qint64>(ms, left + 1)));
}

bool CsvOutput::isDue(const std::vector<TagState>& states, qint64 now) const
{
    if (m_next) return now >= *m_next;
    return now >= *m_start + m_interval ||
           std::all_of(states.begin(), states.end(),
                       [](const TagState& state) { return state.good; });
}

void CsvOutput::show(const News& news, HostProgram& host)
{
    for (const News::LinkEvent& event : news.linkEvents)
        host.tell(linkEventText(event));
    const qint64 now = host.link().now();
    const std::vector<TagState> states = host.values().tags();
    if (!isDue(states, now)) return;
    print(states, host.times().text(now));
    m_next = m_next ? *m_next + ((now - *m_next) / m_interval + 1) * m_interval : now + m_interval;
}

void CsvOutput::print(const std::vector<TagState>& states, const QString& time) const
{
    QStringList fields{time};
    for (size_t i = 0; i < states.size(); ++i)
        fields << (states[i].good ? csvField(tagValueText(m_tags[i], states[i].bytes)) : QString());
    printLine(stdout, fields.join(QLatin1Char(',')));
    std::fflush(stdout);
}

void CsvOutput::end(const LinkFigures& figures)
{
    printLine(stderr, figuresText(figures));
}
