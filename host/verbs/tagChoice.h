#ifndef TAG_CHOICE_H
#define TAG_CHOICE_H

#include "plan/tagFile.h"

/// The tags that a command line can name: tags of an optional file by their names, and other tags
/// by an address such as "MW100", "MX12.3" or "2:QW8".
class TagChoice
{
public:
    /// @param fileName  empty: no file
    /// @throws TagFileError
    TagChoice(const DriverLibrary& driver, const QString& fileName);

    const std::vector<Tag>& inFile() const
    {
        return m_tags;
    }

    bool isNameOfFile(const QString& text) const;

    /// @throws TagFileError when the text is neither a name nor an address
    Tag named(const QString& text) const;

private:
    const DriverLibrary& m_driver;
    std::vector<Tag> m_tags;
};

/// "MW100", or "2:MW100" when the station is not 1.
QString placeText(const Tag& tag);

/// "level (MW100)", or only the place when the tag has no other name.
QString labelText(const Tag& tag);

#endif
