#include "interface/wording/Wording.h"

namespace corvelle {

namespace {

struct Word
{
    QStringView other, ours;
};

// In this order: a longer one before what it contains.
constexpr Word words[] = {
    {u"in Finder", u"in Files"},
    {u"Finder", u"Files"},
    {u"on this Mac", u"on this computer"},
    {u"this Mac", u"this computer"},
    {u"Open Terminal", u"Open a terminal"},
    {u"in the Keychain", u"in the keyring"},
    {u"Keychain", u"keyring"},
    {u"⌘⇧", u"Ctrl+Shift+"},
    {u"⌘⌥", u"Ctrl+Alt+"},
    {u"⌘", u"Ctrl+"},
    {u"⌥", u"Alt+"},
    {u"⇧", u"Shift+"},
};

} // namespace

QString shown(const QString& sentence)
{
    QString result = sentence;
    for (const Word& word : words)
        if (result.contains(word.other))
            result.replace(word.other.toString(), word.ours.toString());
    return result;
}

} // namespace corvelle
