#include "verbs/assignment.h"

#include "plan/recipePlan.h"
#include "plan/tagText.h"
#include "program/hostProgram.h"

namespace {

const QLatin1Char EQUALS_SIGN('=');

VerbFailure usageError(const QString& argument, const QString& problem)
{
    return VerbFailure(EXIT_USAGE, argument + QLatin1String(": ") + problem);
}

/// Position of the "=" behind the name. Addresses and values contain no "=", but names of a tag
/// file may.
int equalsBehindName(const QString& argument, const TagChoice& tags)
{
    for (int at = int(argument.lastIndexOf(EQUALS_SIGN)); at > 0;
         at = int(argument.lastIndexOf(EQUALS_SIGN, at - 1))) {
        if (tags.ofFile(argument.left(at))) return at;
    }
    return int(argument.indexOf(EQUALS_SIGN));
}

/// "21,5" for one float is more likely a number with a decimal comma than two values. The second
/// value would change the memory behind the float.
void mustBeMeantAsList(const QString& address, const Tag& tag, const QStringList& values)
{
    if (tag.type != Tag::FLOAT32 || values.size() == 1) return;
    throw usageError(address + EQUALS_SIGN + values.join(QLatin1Char(',')),
                     QString(QLatin1String("the decimal sign is a point; for %1 floats write a "
                                           "range of %1"))
                         .arg(values.size()));
}

/// The tags of an address that get the values.
std::vector<Tag> tagsFor(const QStringList& texts, const QString& address, const TagChoice& tags,
                         const DriverLibrary& driver)
{
    const int values = int(texts.size());
    const std::vector<Tag> named = tags.named(address);
    if (named.size() == 1) mustBeMeantAsList(address, named.front(), texts);
    if (named.size() == 1 && values <= MOST_RANGE_VALUES)
        return consecutiveTags(named.front(), values, driver);
    if (int(named.size()) == values) return named;
    throw usageError(address, QString(QLatin1String("%1 values for a range of %2"))
                                  .arg(QString::number(values), QString::number(named.size())));
}

/// Several values are for words that belong together, so no refusal may split them.
QString frameProblem(const std::vector<Tag>& tags)
{
    const int words = int(tags.size()) * tags.front().units();
    const int most = RecipePlan::MOST_RECORD_WORDS;
    if (tags.front().isBit() || words <= most) return QString();
    return QString(QLatin1String("%1 words do not fit into one frame, which holds %2"))
        .arg(QString::number(words), QString::number(most));
}

void mustBeEmpty(const QString& argument, const QString& problem)
{
    if (!problem.isEmpty()) throw usageError(argument, problem);
}

std::vector<Assignment> assignmentsOf(const QString& argument, const TagChoice& choice,
                                      const DriverLibrary& driver, NonFinite nonFinite)
{
    const int equals = equalsBehindName(argument, choice);
    if (equals < 1) throw usageError(argument, QLatin1String("is not NAME=VALUE"));
    const QString name = argument.left(equals);
    QStringList values{argument.mid(equals + 1)};
    std::vector<Tag> tags;
    if (const std::optional<Tag> tag = choice.ofFile(name)) {
        tags.push_back(*tag);
    } else {
        values = values.front().split(QLatin1Char(','));
        tags = tagsFor(values, name, choice, driver);
    }
    mustBeEmpty(name, frameProblem(tags));
    std::vector<Assignment> assignments(tags.size());
    for (size_t i = 0; i < tags.size(); ++i) {
        const QString& value = values.at(int(i));
        const QString part = tags.size() == 1 ? argument : tags[i].name + EQUALS_SIGN + value;
        assignments[i] = assignmentOf(part, tags[i], value, driver, nonFinite);
    }
    return assignments;
}

} // namespace

Assignment assignmentOf(const QString& argument, const Tag& tag, const QString& value,
                        const DriverLibrary& driver, NonFinite nonFinite)
{
    mustBeEmpty(argument, valueProblem(tag, value, nonFinite));
    mustBeEmpty(argument, writeProblem(tag, driver));
    Assignment made;
    made.tag = tag;
    made.bytes = tagValueBytes(tag, value).value();
    return made;
}

std::vector<Assignment> assignmentsOf(const QStringList& arguments, const TagChoice& tags,
                                      const DriverLibrary& driver, NonFinite nonFinite)
{
    std::vector<Assignment> assignments;
    for (int list = 0; list < int(arguments.size()); ++list) {
        for (Assignment& made : assignmentsOf(arguments.at(list), tags, driver, nonFinite)) {
            made.list = size_t(list);
            assignments.push_back(made);
        }
    }
    return assignments;
}
