#include "program/configKeys.h"

#include <algorithm>

namespace {

bool holdsTables(const ConfigNode& list)
{
    return std::all_of(list.items.begin(), list.items.end(),
                       [](const ConfigNode& item) { return item.kind == ConfigNode::TABLE; });
}

} // namespace

ConfigKeys::ConfigKeys(const ConfigNode& table, QString name, ConfigMistakes& mistakes)
    : m_table(table), m_name(std::move(name)), m_mistakes(mistakes)
{
}

ConfigKeys::~ConfigKeys()
{
    const QString where = m_name.isEmpty() ? QString() : QLatin1String(" of ") + m_name;
    for (const ConfigKey& key : m_table.keys) {
        if (m_known.contains(key.name)) continue;
        m_mistakes.add(key.line, QString(QLatin1String("\"%1\" is no key%2; the keys are %3"))
                                     .arg(key.name, where, m_known.join(QLatin1String(", "))));
    }
}

const ConfigKey* ConfigKeys::find(const char* key) const
{
    for (const ConfigKey& found : m_table.keys)
        if (found.name == QLatin1String(key)) return &found;
    return nullptr;
}

const ConfigNode* ConfigKeys::take(const char* key)
{
    m_known << QLatin1String(key);
    const ConfigKey* const found = find(key);
    return found ? &found->value : nullptr;
}

int ConfigKeys::line(const char* key) const
{
    const ConfigKey* const found = find(key);
    return found ? found->line : m_table.line;
}

void ConfigKeys::note(const char* key, const QString& problem)
{
    m_mistakes.add(line(key), QLatin1String(key) + QLatin1String(": ") + problem);
}

void ConfigKeys::take(const char* key, const ConfigNode& value, const TakeText& take)
{
    if (value.kind != ConfigNode::TEXT) {
        m_mistakes.add(value.line,
                       QLatin1String(key) + QLatin1String(": a text in quotes is wanted"));
        return;
    }
    const QString problem = take(value.text);
    if (!problem.isEmpty())
        m_mistakes.add(value.line, QLatin1String(key) + QLatin1String(": ") + problem);
}

void ConfigKeys::text(const char* key, const TakeText& take)
{
    const ConfigNode* const value = this->take(key);
    if (value != nullptr) this->take(key, *value, take);
}

void ConfigKeys::truth(const char* key, bool& to)
{
    const ConfigNode* const value = take(key);
    if (value == nullptr) return;
    if (value->kind != ConfigNode::TRUTH)
        return note(key, QLatin1String("true or false is wanted"));
    to = value->truth;
}

void ConfigKeys::number(const char* key, NumberRange range, int& to)
{
    const ConfigNode* const value = take(key);
    if (value == nullptr) return;
    if (value->kind != ConfigNode::NUMBER || value->number < range.lowest ||
        value->number > range.highest)
        return note(key, QString(QLatin1String("a whole number from %1 to %2 is wanted"))
                             .arg(range.lowest)
                             .arg(range.highest));
    to = int(value->number);
}

void ConfigKeys::texts(const char* key, const TakeText& take)
{
    const ConfigNode* const value = this->take(key);
    if (value == nullptr) return;
    if (value->kind != ConfigNode::LIST)
        return note(key, QLatin1String("a list of texts in brackets is wanted"));
    for (const ConfigNode& item : value->items)
        this->take(key, item, take);
}

const ConfigNode* ConfigKeys::table(const char* key)
{
    const ConfigNode* const value = take(key);
    if (value == nullptr || value->kind == ConfigNode::TABLE) return value;
    note(key, QString(QLatin1String("a table [%1] is wanted")).arg(QLatin1String(key)));
    return nullptr;
}

const ConfigNode* ConfigKeys::tables(const char* key)
{
    const ConfigNode* const value = take(key);
    if (value == nullptr) return nullptr;
    if (value->kind == ConfigNode::LIST && holdsTables(*value)) return value;
    note(key, QString(QLatin1String("tables [[%1]] are wanted")).arg(QLatin1String(key)));
    return nullptr;
}

void ConfigKeys::require(const char* key)
{
    if (find(key) != nullptr) return;
    m_mistakes.add(m_table.line,
                   QString(QLatin1String("%1 has no key %2")).arg(m_name, QLatin1String(key)));
}
