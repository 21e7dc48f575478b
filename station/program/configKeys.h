#ifndef CONFIG_KEYS_H
#define CONFIG_KEYS_H

#include "program/configMistakes.h"
#include "program/configNode.h"
#include "program/settingTexts.h"

#include <functional>

/// Takes the keys of one table of the configuration. Each function takes a key that may be missing,
/// and notes a value that does not fit. The destructor notes the keys that nobody took.
class ConfigKeys
{
public:
    /// Takes a text.
    /// @return the problem in words; empty: none
    using TakeText = std::function<QString(const QString&)>;

    /// @param name  of the table, for sentences: "[history]"; empty: the whole file
    ConfigKeys(const ConfigNode& table, QString name, ConfigMistakes& mistakes);
    ~ConfigKeys();
    ConfigKeys(const ConfigKeys&) = delete;
    ConfigKeys& operator=(const ConfigKeys&) = delete;

    bool has(const char* key) const
    {
        return find(key) != nullptr;
    }

    /// The line of a key; of a missing key that of the table.
    int line(const char* key) const;

    void text(const char* key, const TakeText& take);
    void truth(const char* key, bool& to);
    void number(const char* key, NumberRange range, int& to);
    void texts(const char* key, const TakeText& take);

    /// A table, or a list of tables; null: it is missing or no such thing.
    const ConfigNode* table(const char* key);
    const ConfigNode* tables(const char* key);

    /// Notes a missing key.
    void require(const char* key);

private:
    const ConfigKey* find(const char* key) const;
    const ConfigNode* take(const char* key);
    void note(const char* key, const QString& problem);
    void take(const char* key, const ConfigNode& value, const TakeText& take);

    const ConfigNode& m_table;
    const QString m_name;
    ConfigMistakes& m_mistakes;
    QStringList m_known;
};

#endif
