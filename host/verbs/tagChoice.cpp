#include "verbs/tagChoice.h"

#include <algorithm>

TagChoice::TagChoice(const DriverLibrary& driver, const QString& fileName) : m_driver(driver)
{
    if (!fileName.isEmpty()) m_tags = readTagFile(fileName, driver);
}

std::optional<Tag> TagChoice::ofFile(const QString& name) const
{
    const auto found = std::find_if(m_tags.begin(), m_tags.end(),
                                    [&name](const Tag& tag) { return tag.name == name; });
    return found == m_tags.end() ? std::nullopt : std::optional<Tag>(*found);
}

std::vector<Tag> TagChoice::named(const QString& text) const
{
    if (const std::optional<Tag> tag = ofFile(text)) return {*tag};
    try {
        return tagsFromAddress(text, m_driver);
    } catch (const TagFileError& error) {
        if (m_tags.empty()) throw;
        throw TagFileError(std::string(error.what()) + "; nor is it a name of the tag file");
    }
}

QString labelText(const Tag& tag)
{
    const QString place = placeText(tag);
    if (tag.name == place || tag.name == typedAddressText(tag)) return tag.name;
    return tag.name + QLatin1String(" (") + place + QLatin1Char(')');
}
