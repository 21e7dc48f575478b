#ifndef RECIPE_PLAN_H
#define RECIPE_PLAN_H

#include "plan/tag.h"
#include "quorvane_ka_kb_plc.h"

#include <QByteArray>

#include <stdexcept>
#include <vector>

/// The recipe cannot be transferred. what() says why, a line for each trouble.
struct RecipeError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// How a recipe's tags lie in the driver's recipe buffer, and the records that move them.
///
/// Words that lie together become one record, as do bits. The driver would join records that start
/// at the same unit, and bits that touch, and then take the values of the join one behind the
/// other; here no two records do either.
///
/// Uploads of bits do not come back right: the driver stores whole words. So they have no records;
/// read them in another way.
class RecipePlan
{
public:
    enum {
        MOST_RECORD_WORDS = 123, ///< MODBUS Application Protocol V1.1b3, 6.12
        MOST_RECORD_BITS = 496   ///< whole groups of 16 that one record may write at once
    };

    /// @param linkNumber  of the records
    /// @throws RecipeError when two tags share memory, or all do not fit into the buffer
    RecipePlan(const std::vector<Tag>& tags, int linkNumber);

    QVector<_RCP_VAR_PRO> downloadRecords() const;
    QVector<_RCP_VAR_PRO> uploadRecords() const;

    /// What the driver's buffer takes, in bytes.
    int bufferBytes() const
    {
        return 2 * m_words;
    }

    /// The buffer with the tags' values.
    /// @param values  by tag, as intf_setData takes them
    QByteArray buffer(const std::vector<QByteArray>& values) const;

    /// A word tag's value from the buffer after an upload.
    QByteArray value(size_t tag, const QByteArray& buffer) const;

private:
    struct Unit
    {
        int station;
        QString area;
        int number;
        size_t tag;
        int unitOfTag;
    };

    void sortUnits();
    void checkShared() const;
    void layOut();
    bool continues(size_t unit) const;

    std::vector<Tag> m_tags;
    const int m_linkNumber;
    std::vector<Unit> m_units; ///< in the order of the device
    std::vector<_RCP_VAR_PRO> m_records;
    std::vector<std::vector<int>> m_bytePlaces; ///< by tag and unit, in the buffer
    int m_words = 0;
};

#endif
