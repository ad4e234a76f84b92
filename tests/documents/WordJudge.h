// What another reader makes of a Word file, and what we make of it, in the same terms.
#pragma once

#include <QHash>
#include <QString>

#include <optional>

namespace corvelle {

// Words are runs of letters, digits and underlines, in compatible form (NFKC) and lower case, each
// with how often it stands there. Markers of lists and notes, equations and pictures are no words.
using WordCounts = QHash<QString, int>;

// Counted by our rules in both: a heading has one of six levels by its very style. Headings and
// cells count when words are in them: the judge fills up short rows.
struct DocumentFacts
{
    WordCounts words;
    int headings = 0, items = 0, cells = 0, notes = 0;
};

// None where the file is refused. The judge is pandoc, which must be installed.
std::optional<DocumentFacts> judgedFacts(const QString& path);
std::optional<DocumentFacts> ourFacts(const QString& path);

// Twice the words in common by the words of both; 1 where both have none.
double agreement(const WordCounts& ours, const WordCounts& theirs);

// Why a file differs from the judge's reading by more than is allowed.
struct WordDifference
{
    QString rule, sentence;
    QStringList files;
};
std::vector<WordDifference> wordDifferences();

} // namespace corvelle
