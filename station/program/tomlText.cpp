#include "program/tomlText.h"

#include <toml++/toml.h>

namespace {

enum { MOST_BAD_LINES = 100 };

QString textOf(std::string_view utf8)
{
    return QString::fromUtf8(utf8.data(), int(utf8.size()));
}

ConfigNode nodeOf(const toml::node& node);

void takeTable(ConfigNode& made, const toml::table& table)
{
    for (const auto& [key, value] : table) {
        made.keys.push_back({textOf(key.str()), int(key.source().begin.line), nodeOf(value)});
    }
}

ConfigNode nodeOf(const toml::node& node)
{
    ConfigNode made;
    made.line = int(node.source().begin.line);
    if (const auto* const text = node.as_string()) {
        made.kind = ConfigNode::TEXT;
        made.text = textOf(text->get());
    } else if (const auto* const number = node.as_integer()) {
        made.kind = ConfigNode::NUMBER;
        made.number = number->get();
    } else if (const auto* const truth = node.as_boolean()) {
        made.kind = ConfigNode::TRUTH;
        made.truth = truth->get();
    } else if (const auto* const list = node.as_array()) {
        made.kind = ConfigNode::LIST;
        for (const toml::node& item : *list)
            made.items.push_back(nodeOf(item));
    } else if (const auto* const table = node.as_table()) {
        takeTable(made, *table);
    } else {
        made.kind = ConfigNode::OTHER;
    }
    return made;
}

/// Empties a line from 1; the numbers of the other lines stay.
/// @return whether it had anything
bool emptyLine(QByteArray& text, int line)
{
    int begin = 0;
    for (int before = 1; before < line; ++before) {
        begin = int(text.indexOf('\n', begin)) + 1;
        if (begin == 0) return false;
    }
    const int found = int(text.indexOf('\n', begin));
    const int end = found < 0 ? int(text.size()) : found;
    text.remove(begin, end - begin);
    return end > begin;
}

} // namespace

ConfigNode readToml(QByteArray text, ConfigMistakes& mistakes)
{
    for (int bad = 0; bad < MOST_BAD_LINES; ++bad) {
        try {
            const std::string_view view(text.constData(), size_t(text.size()));
            ConfigNode whole;
            takeTable(whole, toml::parse(view));
            return whole;
        } catch (const toml::parse_error& error) {
            const int line = int(error.source().begin.line);
            mistakes.add(line, textOf(error.description()));
            if (!emptyLine(text, line)) break;
        }
    }
    return {};
}
