// What styles and numbering say of a Word file's paragraphs (ECMA-376 Part 1, 17.7 and 17.9). A
// style counts by its name alone; what it is based on isn't looked at.
#pragma once

#include "documents/DNode.h"
#include "documents/XNode.h"

#include <QHash>
#include <QString>

namespace corvelle {

struct Styles
{
    QHash<QString, QString> paragraph, character; // by style id: the name, null for none
    QHash<QString, QString> numbering;            // by style id: a number id

    static Styles of(XNode root);
};

struct Numbering
{
    struct Level
    {
        bool ordered = true;
        QString style; // the paragraph style that takes it; null for none
    };
    struct Abstract
    {
        QHash<QString, Level> levels; // by the level as it is written
        QString link;                 // a numbering style; null for none
    };

    QHash<QString, QString> nums; // by number id: the abstract one's id
    QHash<QString, Abstract> abstracts;
    QHash<QString, NumLevel> byStyle;
    Styles styles;

    static Numbering of(XNode root, const Styles& styles);

    std::optional<NumLevel> find(const QString& numberId, const QString& level) const;
    // Of a paragraph with these properties; the node may be missing.
    std::optional<NumLevel> ofParagraph(XNode numberProperties, const QString& styleId) const;
};

} // namespace corvelle
