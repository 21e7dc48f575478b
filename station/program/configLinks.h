#ifndef CONFIG_LINKS_H
#define CONFIG_LINKS_H

#include "driver/driverLibrary.h"
#include "machine/linkConfig.h"
#include "program/configMistakes.h"
#include "program/configNode.h"

#include <map>

/// Reads the tables [[link]] of a configuration, with their tag files.
class ConfigLinks
{
public:
    /// @param folder  at which the paths of the configuration begin
    ConfigLinks(QString folder, const DriverLibrary& driver, ConfigMistakes& mistakes);

    /// Adds the link of one table.
    /// @param isWhole  false: lines of the text were left out, so that no key counts as missing
    void add(const ConfigNode& table, bool isWhole);

    const std::vector<LinkConfig>& links() const
    {
        return m_links;
    }

private:
    /// What a link has, and no other link may have.
    struct Owned
    {
        QString link;
        int line;
    };

    void takeTags(const QString& fileName, int line, LinkConfig& config);
    QString nameTaken(const QString& name, int line);
    QString portTaken(const LinkConfig& config, const QString& device, int line);

    const QString m_folder;
    const DriverLibrary& m_driver;
    ConfigMistakes& m_mistakes;
    std::vector<LinkConfig> m_links;
    std::map<QString, int> m_lineOfName;
    std::map<QString, SharedTags> m_tagsOfFile; ///< of the files without a mistake
    std::map<QString, Owned> m_ports;           ///< by the device's canonical path
};

/// The tags of a file.
/// @throws TagFileError, also when the file has none
std::vector<Tag> tagsOfLink(const QString& fileName, const DriverLibrary& driver);

#endif
