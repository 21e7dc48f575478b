#ifndef TOLD_VALUES_H
#define TOLD_VALUES_H

#include "values/linkValues.h"

#include <memory>
#include <vector>

/// What the clients of the stream have been told of the values. All clients that follow the stream
/// know the same, so that each change is worked out and encoded once.
///
/// Of the HTTP thread.
class ToldValues
{
public:
    using Links = std::vector<std::shared_ptr<const LinkValues>>;

    /// Takes the links of this moment and whether writes are allowed.
    /// @return whether they are others than before: then all clients need a full snapshot
    bool setLinks(const Links& links, bool areWritesAllowed);

    /// Forgets everything.
    void clear();

    /// The tags whose value, quality or trouble changed since they were told:
    /// {"full":false,"values":[…]}, each as appendChange() writes it. Empty: none did.
    QByteArray changes();

    /// The tags of which only the time moved, as an array [[link,tag,time],…].
    QByteArray seen();

    /// Everything as it was told last, each tag as appendValue() writes it:
    /// {"full":true,"values":[…]}.
    QByteArray all() const;

private:
    struct Link
    {
        std::shared_ptr<const LinkValues> values;
        std::vector<TagReading> told;
    };

    std::vector<Link> m_links;
    bool m_areWritesAllowed = false;
};

#endif
