// The words of a stretch of a page as they are drawn: a mention stands there with its label, marks
// are formats, and every place in the stretch has its place in the drawn words.
//
// A value. On the main thread, since it may have to read a table to tell it in words.
#pragma once

#include "interface/page/PageStyle.h"
#include "interface/theme/Icons.h"

#include <QTextLayout>

#include <functional>
#include <memory>
#include <vector>

namespace corvelle {

// How a mentioned item looks now; `exists` is false when it is gone.
struct ItemLook
{
    Icon sign = Icon::Page;
    bool exists = true;
};
using ItemLooks = std::function<ItemLook(const QString& id)>;

struct ShownText
{
    struct Stretch
    {
        int from = 0, to = 0; // of the drawn words
    };
    struct Chip : Stretch
    {
        QString id;
        ItemLook look;
    };
    struct Address : Stretch
    {
        std::shared_ptr<const Link> link;
    };

    QString words;
    QList<QTextLayout::FormatRange> formats;
    std::vector<Chip> chips;
    std::vector<Address> links;
    std::vector<Stretch> code;

    // Places count from the start of the stretch.
    int shown(Units place) const;
    Units place(int shown) const;

    // A unit that is drawn as more or fewer characters than one.
    struct Jump
    {
        Units place = 0;
        int shown = 0, length = 0;
    };
    std::vector<Jump> jumps; // in order

private:
    // What the jumps before one add to places.
    Units shiftBefore(std::vector<Jump>::const_iterator jump) const;
};

// Of a stretch of one block, or of several in the cell of a table, where newlines become line
// breaks.
ShownText shownText(const FlatText& text, Units from, Units to, Block kind, const PageStyle& style,
    const ItemLooks& items);

// Colours the words of a code block; the stretch begins at `at` in the block.
void colorCode(ShownText& shown, QStringView block, qsizetype at, const QString& language,
    const PageStyle& style);

// Room at the head of a mention's chip, which its sign stands in, and behind its label.
inline constexpr double chipHead = 22, chipTail = 6, chipSign = 14;

} // namespace corvelle
