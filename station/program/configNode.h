#ifndef CONFIG_NODE_H
#define CONFIG_NODE_H

#include <QString>

#include <vector>

struct ConfigKey;

/// A value of the configuration file, and where it stands.
struct ConfigNode
{
    enum Kind { TEXT, NUMBER, TRUTH, LIST, TABLE, OTHER };

    Kind kind = TABLE;
    int line = 1; ///< from 1
    QString text;
    qint64 number = 0; ///< a whole number
    bool truth = false;
    std::vector<ConfigNode> items; ///< of a list
    std::vector<ConfigKey> keys;   ///< of a table; each name once
};

struct ConfigKey
{
    QString name;
    int line = 1; ///< of the key
    ConfigNode value;
};

#endif
