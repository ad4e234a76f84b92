// The elements and texts of an HTML text, as a page's reader wants them.
//
// Forgiving: an end tag closes up to its nearest partner and is ignored without one, what is
// skipped isn't in the tree, and tags deeper than 250 levels are ignored while their text stays.
// Paragraphs that an office program wrote for a list stand under an element of their own for each
// run.
//
// Items are numbers, the root is 0. Texts and attributes are views into the HTML.
#pragma once

#include "pages/HtmlTags.h"

#include <QHash>
#include <QString>

#include <vector>

namespace corvelle {

class HtmlTree
{
public:
    static constexpr int deepest = 250;

    explicit HtmlTree(QStringView html);

    struct Item
    {
        QStringView text; // a text, entities and all; the attributes of an element
        qint32 firstChild = -1, next = -1;
        HtmlTag tag = HtmlTag::None;
        quint8 listLevel = 0; // of a paragraph under a WordList: 1...100
    };
    const Item& operator[](qint32 index) const { return m_items[static_cast<size_t>(index)]; }

    // What stands in front of a list paragraph: "1.", "b)", "·"; empty when nothing does.
    QString listMarker(qint32 paragraph) const { return m_markers.value(paragraph); }

private:
    friend class HtmlTreeBuilder;

    std::vector<Item> m_items;
    QHash<qint32, QString> m_markers;
};

} // namespace corvelle
