#include "verbs/tagChoice.h"

#include <algorithm>

TagChoice::TagChoice(const DriverLibrary& driver, const QString& fileName) : m_driver(driver)
{
    if (!fileName.isEmpty()) m_tags = readTagFile(fileName, driver);
}

bool TagChoice::isNameOfFile(const QString& text) const
{
    return std::any_of(m_tags.begin(), m_tags.end(),
                       [&text](const Tag& tag) { return tag.name == text; });
}

Tag TagChoice::named(const QString& text) const
{
    for (const Tag& tag : m_tags) {
        if (tag.name == text) return tag;
    }
    try {
        return tagFromAddress(text, m_driver);
    } catch (const TagFileError& error) {
        if (m_tags.empty()) throw;
        throw TagFileError(std::string(error.what()) + "; nor is it a name of the tag file");
    }
}

QString placeText(const Tag& tag)
{
    const QString place = tag.area + tag.address;
    return tag.station == 1 ? place : QString::number(tag.station) + QLatin1Char(':') + place;
}

QString labelText(const Tag& tag)
{
    const QString place = placeText(tag);
    return tag.name == place ? place : tag.name + QLatin1String(" (") + place + QLatin1Char(')');
}
