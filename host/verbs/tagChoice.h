#ifndef TAG_CHOICE_H
#define TAG_CHOICE_H

#include "plan/tagFile.h"

/// The tags of an optional file, and those that a command line names besides: by a name of the
/// file, or by an address such as "MW100", "MX12.3" or "2:QW8".
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

    /// @throws TagFileError when it is neither
    Tag named(const QString& text) const;

private:
    const DriverLibrary& m_driver;
    std::vector<Tag> m_tags;
};

/// "MW100", or "2:MW100" when the station is not 1.
QString placeText(const Tag& tag);

/// "level (MW100)", or the place alone when that is its name.
QString labelText(const Tag& tag);

#endif
