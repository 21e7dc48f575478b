#include "plant/linkCommands.h"

#include "machine/tagConsent.h"
#include "plan/tagText.h"
#include "values/writtenValue.h"

#include <utility>

/// The ends that nobody was told yet.
class LinkCommands::Ends
{
public:
    struct Told
    {
        Ended ended;
        WriteEnd end;
    };

    explicit Ends(std::function<void()> wake) : m_wake(std::move(wake)) {}

    void put(Told told)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_wake) return;
        m_told.push_back(std::move(told));
        m_wake();
    }

    std::vector<Told> take()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return std::exchange(m_told, {});
    }

    void close()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_wake = nullptr;
        m_told.clear();
    }

private:
    std::mutex m_mutex;
    std::function<void()> m_wake; ///< guarded by m_mutex; empty: closed
    std::vector<Told> m_told;     ///< guarded by m_mutex
};

struct LinkCommands::Asked
{
    QString link, tag, from;
    Ended ended;
};

namespace {

/// The value as a client of the API would write it: one rule says what fits a tag. Numbers beyond
/// what a double holds exactly fit no tag.
struct AsJson
{
    QJsonValue operator()(std::monostate) const
    {
        return QJsonValue();
    }
    QJsonValue operator()(bool truth) const
    {
        return truth;
    }
    QJsonValue operator()(qint64 number) const
    {
        return double(number);
    }
    QJsonValue operator()(float number) const
    {
        return double(number);
    }
    QJsonValue operator()(const QString& text) const
    {
        return text;
    }
};

QString noLink(const QString& link)
{
    return QString(QLatin1String("there is no link %1")).arg(quoted(link));
}

QString noTag(const QString& link, const QString& tag)
{
    return QString(QLatin1String("link %1 has no tag %2")).arg(quoted(link), quoted(tag));
}

/// The bytes to be written, or why the tag is not written, in words.
std::variant<QByteArray, UnfitValue> bytesFor(const Tag& tag, const MetricValue& value,
                                              bool areWritesAllowed)
{
    const QString problem = tagConsentProblem(tag, areWritesAllowed);
    if (!problem.isEmpty()) return UnfitValue{problem};
    return writtenBytes(tag, std::visit(AsJson(), value));
}

} // namespace

LinkCommands::LinkCommands(StationLinks& links, const std::atomic<bool>& areWritesAllowed,
                           std::function<void()> wake)
    : m_links(links),
      m_areWritesAllowed(areWritesAllowed),
      m_ends(std::make_shared<Ends>(std::move(wake)))
{
}

LinkCommands::~LinkCommands()
{
    m_ends->close();
}

void LinkCommands::write(const QString& linkName, const QString& tagName, const MetricValue& value,
                         const QString& from, Ended ended)
{
    const Asked asked = {linkName, tagName, from, std::move(ended)};
    const std::shared_ptr<MachineLink> link = m_links.find(linkName);
    if (!link) return refuse(asked, noLink(linkName), TagReading());
    const std::optional<int> index = link->tagNamed(tagName);
    if (!index) return refuse(asked, noTag(linkName, tagName), TagReading());
    const Tag& tag = link->tags()[size_t(*index)];
    const std::variant<QByteArray, UnfitValue> bytes = bytesFor(tag, value, m_areWritesAllowed);
    if (const auto* const unfit = std::get_if<UnfitValue>(&bytes))
        return refuse(asked, unfit->problem, link->values().reading(*index));
    link->write(*index, std::get<QByteArray>(bytes), from,
                [ends = m_ends, asked](const WriteEnd& end) {
                    ends->put({asked.ended, end});
                });
}

void LinkCommands::refuse(const Asked& asked, const QString& reason, const TagReading& held)
{
    const quint64 id = m_links.audit().nextId();
    m_links.audit().writeRefused({id, asked.link, asked.from}, asked.tag, reason);
    m_ends->put({asked.ended, {id, WriteEnd::REFUSED, reason, held}});
}

void LinkCommands::refused(const QString& what, const QString& reason, const QString& from)
{
    m_links.audit().refused(from, what, reason);
}

void LinkCommands::turn()
{
    for (const Ends::Told& told : m_ends->take())
        told.ended(told.end);
}
