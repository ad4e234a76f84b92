// Unicode on texts of any length, and the keys by which paths are compared.
#pragma once

#include <QByteArray>
#include <QString>

namespace corvelle {

// Canonical precomposed form (Unicode NFC). Linear in the text, unlike QString::normalized().
QString composed(QStringView text);

// The full Unicode lower case ("ẞ" gives "ß", a final "Σ" gives "ς"), independent of the system's
// language.
QString lowerCased(QStringView text);

// Whether a volume takes names that differ only in case for the same name.
enum class NameCase { Kept, Ignored };

// The form in which two paths are compared. Where the volume keeps case apart it is the path
// itself; where it ignores case it is the composed path in lower case. A key is its own key.
QString pathKey(const QString& path, NameCase nameCase);

// Negative, zero or positive, in the order of code points, which is that of the UTF-8 bytes.
int compareByCodePoints(QStringView left, QStringView right);

// The order of names that people expect: runs of digits by their value ("Page 2" before "Page 10"),
// letters in any case alike, and code points where all that is equal.
int compareNaturally(QStringView left, QStringView right);

// The part behind the last "/", and the part before it ("" at the top).
QString lastComponent(const QString& path);
QString parentPath(const QString& path);
// Whether the path lies in the folder, however deep; not so the folder itself. By exact names.
bool liesBelow(const QString& path, const QString& folder);

// The beginning of a text, at most so many characters as a person counts them; never half of one.
QStringView firstCharacters(QStringView text, qsizetype most);

// A text as a field between tabs: in quotes where it holds what would end it.
QString tabField(const QString& text);

// Stretches without white space.
qsizetype wordCount(QStringView text);

// A text of one line cut down to `most` UTF-16 units, with an ellipsis; for log lines.
QString shortened(const QString& text, qsizetype most = 200);

} // namespace corvelle
