#ifndef TAG_CHOICE_H
#define TAG_CHOICE_H

#include "plan/tagFile.h"
#include "plan/typedAddress.h"

#include <optional>

/// The tags that a command line can name: tags of an optional file by their names, and other tags
/// by a typed address such as "MW100", "2:QW8:int16" or "MW0..MW62".
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

    /// The tag of the file with this name.
    std::optional<Tag> ofFile(const QString& name) const;

    /// The tag of the file with this name, else the tags of the typed address.
    /// @throws TagFileError when the text is neither a name nor an address
    std::vector<Tag> named(const QString& text) const;

private:
    const DriverLibrary& m_driver;
    std::vector<Tag> m_tags;
};

/// "level (MW100)", or only the name when it is the tag's typed address.
QString labelText(const Tag& tag);

#endif
