#include "values/jsonKeys.h"

#include <QSet>

#include <vector>

namespace {

/// Walks over the signs and texts of JSON. Behind the first mistake of the text it may see keys
/// that are none; a parser has stopped there.
class KeyWalk
{
public:
    explicit KeyWalk(const QByteArray& json) : m_json(json) {}

    QString problem()
    {
        for (m_at = 0; m_at < int(m_json.size()); ++m_at) {
            const QString found = problemAt(m_json.at(m_at));
            if (!found.isEmpty()) return found;
        }
        return QString();
    }

private:
    QString problemAt(char sign)
    {
        switch (sign) {
        case '"':
            return textProblem();
        case '{':
        case '[':
            if (m_open.size() >= MOST_NESTED) return QLatin1String("it is nested too deeply");
            m_open.emplace_back();
            m_isKeyDue = sign == '{';
            m_isObject.push_back(m_isKeyDue);
            break;
        case '}':
        case ']':
            if (!m_open.empty()) m_open.pop_back();
            if (!m_isObject.empty()) m_isObject.pop_back();
            m_isKeyDue = false;
            break;
        case ',':
            m_isKeyDue = !m_isObject.empty() && m_isObject.back();
            break;
        default:
            break;
        }
        return QString();
    }

    /// Goes to the text's last quotation mark.
    QString textProblem()
    {
        const int begin = ++m_at;
        bool hasEscape = false;
        for (; m_at < int(m_json.size()) && m_json.at(m_at) != '"'; ++m_at) {
            if (m_json.at(m_at) != '\\') continue;
            hasEscape = true;
            ++m_at; // an escaped quotation mark does not end the text
        }
        if (!m_isKeyDue) return QString();
        m_isKeyDue = false;
        return keyProblem(m_json.mid(begin, m_at - begin), hasEscape);
    }

    QString keyProblem(const QByteArray& key, bool hasEscape)
    {
        if (hasEscape) return QLatin1String("a key has an escape");
        if (m_open.back().contains(key))
            return QString(QLatin1String("the key \"%1\" stands twice"))
                .arg(QString::fromUtf8(key));
        m_open.back().insert(key);
        return QString();
    }

    const QByteArray& m_json;
    int m_at = 0;
    bool m_isKeyDue = false;              ///< a text here is a key
    std::vector<QSet<QByteArray>> m_open; ///< keys so far of what is open; none of an array
    std::vector<bool> m_isObject;         ///< of what is open
};

} // namespace

QString jsonKeyProblem(const QByteArray& json)
{
    return KeyWalk(json).problem();
}
