#include "program/configLinks.h"

#include "driver/companionFiles.h"
#include "links/linkText.h"
#include "plan/durationText.h"
#include "plan/tagFile.h"
#include "program/configKeys.h"

#include <QDir>
#include <QFileInfo>

#include <utility>

namespace {

/// The device of two names that lead to the same file is the same.
QString canonicalDevice(const QString& device)
{
    const QString canonical = QFileInfo(device).canonicalFilePath();
    return canonical.isEmpty() ? QDir::cleanPath(device) : canonical;
}

} // namespace

std::vector<Tag> tagsOfLink(const QString& fileName, const DriverLibrary& driver)
{
    std::vector<Tag> tags = readTagFile(fileName, driver);
    if (tags.empty()) throw errorInFile(fileName, TagFileError("the file has no tags"));
    return tags;
}

ConfigLinks::ConfigLinks(QString folder, const DriverLibrary& driver, ConfigMistakes& mistakes)
    : m_folder(std::move(folder)), m_driver(driver), m_mistakes(mistakes)
{
}

QString ConfigLinks::nameTaken(const QString& name, int line)
{
    const auto [found, isNew] = m_lineOfName.insert({name, line});
    if (isNew) return QString();
    return QString(QLatin1String("the link on line %1 has the name \"%2\" already"))
        .arg(QString::number(found->second), name);
}

QString ConfigLinks::portTaken(const LinkConfig& config, const QString& device, int line)
{
    const auto [found, isNew] = m_ports.insert({canonicalDevice(device), {config.name, line}});
    if (isNew) return QString();
    return QString(QLatin1String("the link \"%1\" on line %2 has the serial port %3 already"))
        .arg(found->second.link, QString::number(found->second.line), device);
}

/// A file that cannot be read is a mistake of the configuration; what stands in it, one of its own.
void ConfigLinks::takeTags(const QString& fileName, int line, LinkConfig& config)
{
    const auto known = m_tagsOfFile.find(fileName);
    if (known != m_tagsOfFile.end()) {
        config.tags = known->second;
        return;
    }
    try {
        fileBytes(fileName);
    } catch (const TagFileError& error) {
        return m_mistakes.add(line, QLatin1String("tags: ") + QString::fromUtf8(error.what()));
    }
    try {
        config.tags = tagsOfLink(fileName, m_driver);
        m_tagsOfFile.insert({fileName, config.tags});
    } catch (const TagFileError& error) {
        m_mistakes.addLines(QString::fromUtf8(error.what()));
    }
}

void ConfigLinks::add(const ConfigNode& table, bool isWhole)
{
    LinkConfig config;
    ConfigKeys keys(table, QLatin1String("[[link]]"), m_mistakes);
    keys.text("name", [&](const QString& text) {
        config.name = text;
        const QString problem = linkNameProblem(text);
        return problem.isEmpty() ? nameTaken(text, keys.line("name")) : problem;
    });
    std::optional<LinkAddress::Kind> kind;
    keys.text("link", [&](const QString& text) {
        config.link = text;
        try {
            const LinkAddress address = linkAddress(text, m_driver);
            kind = address.kind;
            return address.kind == LinkAddress::SERIAL
                       ? portTaken(config, address.device, keys.line("link"))
                       : QString();
        } catch (const LinkTextError& error) {
            return QString::fromUtf8(error.what());
        }
    });
    QString tagFile;
    keys.text("tags", [&](const QString& text) {
        tagFile = QDir::cleanPath(QDir(m_folder).filePath(text));
        return QString();
    });
    keys.text("pace", [&config](const QString& text) {
        config.paceMs = durationMs(text);
        return durationProblem(text);
    });
    keys.number("timeout_ms", TIMEOUT_RANGE, config.timeoutMs);
    keys.number("attempts", ATTEMPTS_RANGE, config.attempts);
    keys.number("pause_ms", PAUSE_RANGE, config.pauseMs);

    const bool hasDemoTags = kind == LinkAddress::SIMULATED && !keys.has("tags");
    if (isWhole) {
        keys.require("name");
        keys.require("link");
        if (kind && !hasDemoTags) keys.require("tags");
    }
    if (hasDemoTags) tagFile = companionTagFile();
    if (!tagFile.isEmpty()) takeTags(tagFile, keys.line("tags"), config);
    m_links.push_back(config);
}
