#include "library/FileNames.h"

#include "base/SkippedNames.h"
#include "base/Text.h"
#include "platform/FileMoves.h"

#include <QTextBoundaryFinder>

#include <vector>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr qsizetype mostBytes = 240;
constexpr qsizetype charactersCutAtOnce = 8;
constexpr qsizetype leastStemCharacters = 9;
constexpr qsizetype mostExtensionBytes = 32;

const QString fallback = u"Corvelle"_s;

QString withoutLeadingDots(const QString& text)
{
    qsizetype dots = 0;
    while (dots < text.size() && text[dots] == u'.')
        ++dots;
    return text.mid(dots);
}

// The ends of all characters as a person counts them, in UTF-16 units.
std::vector<qsizetype> characterEnds(const QString& text)
{
    std::vector<qsizetype> ends;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    while (finder.toNextBoundary() > 0)
        ends.push_back(finder.position());
    return ends;
}

// Cuts whole characters off the stem, eight at a time, until the name is short enough.
QString cutToLength(const QString& name)
{
    if (name.toUtf8().size() <= mostBytes)
        return name;
    QString stem = name, ending;
    if (const QString extension = fileExtension(name);
        !extension.isEmpty() && extension.toUtf8().size() <= mostExtensionBytes) {
        const QString before = name.left(name.size() - extension.size() - 1);
        if (characterEnds(before).size() >= static_cast<size_t>(leastStemCharacters)) {
            stem = before;
            ending = u'.' + extension;
        }
    }
    const std::vector<qsizetype> ends = characterEnds(stem);
    auto kept = static_cast<qsizetype>(ends.size());
    const qsizetype room = mostBytes - ending.toUtf8().size();
    QString cut = stem;
    // No character takes less than a byte for each unit that it has.
    while (kept > 0 && (cut.size() > room || cut.toUtf8().size() > room)) {
        kept = std::max<qsizetype>(kept - charactersCutAtOnce, 0);
        const qsizetype units = kept > 0 ? ends[static_cast<size_t>(kept - 1)] : 0;
        if (units > room) {
            continue;
        }
        cut = stem.left(units);
    }
    return kept == 0 ? ending : cut + ending;
}

// What a look at the disk passes over would take its card to the Trash.
QString noticedName(QString name)
{
    while (name.startsWith(u"~$") || name.startsWith(u'.'))
        name.remove(0, name.startsWith(u'.') ? 1 : 2);
    while (name.contains(u".sb-")) // what is left of one may be the start of another
        name.replace(u".sb-"_s, u"-sb-"_s);
    return isSkippedName(name) || generatedByName(name) == Generated::Yes ? name + u'-' : name;
}

} // namespace

QString storableTitle(const QString& typed)
{
    QString title = QString::fromUtf8(typed.toUtf8());
    return title.remove(QChar(u'\0'));
}

QString safeFileName(const QString& title)
{
    QString name = storableTitle(title);
    name.replace(u'/', u'-');
    name = withoutLeadingDots(name.trimmed());
    if (name.trimmed().isEmpty())
        return fallback;
    name = cutToLength(name);
    if (name.trimmed().isEmpty() || name.startsWith(u'.'))
        return fallback;
    name = noticedName(name);
    return name.trimmed().isEmpty() ? fallback : name;
}

QString fileExtension(const QString& name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot > 0 ? name.mid(dot + 1) : QString();
}

QString uniqueName(const QString& name, const QString& folder, NameOf of, const QString& self,
    const std::function<bool(const QString&)>& isTaken)
{
    const auto isFree = [&](const QString& candidate) {
        const QString path = folder + u'/' + candidate;
        if (isTaken && path != self && isTaken(path))
            return false;
        return !isThere(path) ||
               (!self.isEmpty() && lowerCased(path) == lowerCased(self) && isSameItem(path, self));
    };
    if (isFree(name))
        return name;
    const QString extension = of == NameOf::File ? fileExtension(name) : QString();
    const QString ending = extension.isEmpty() ? QString() : u'.' + extension;
    const QString stem = name.left(name.size() - ending.size());
    for (int number = 2;; ++number)
        if (QString candidate = stem + u' ' + QString::number(number) + ending; isFree(candidate))
            return candidate;
}

} // namespace corvelle
