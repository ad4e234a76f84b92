// A document that is only read, such as a Word file, in the form of a page: the same view shows
// both.
//
// Pure; any thread.
#pragma once

#include "documents/DocBlock.h"
#include "pages/FlatText.h"

#include <QHash>

#include <optional>

namespace corvelle {

class DocumentPage
{
public:
    // The name goes into those of its pictures, and isn't another document's.
    DocumentPage(DocBlocks blocks, const QString& name);

    const FlatText& text() const { return m_text; }

    // The bytes of the picture that the text has under this name; empty when it has none.
    QByteArray picture(const QString& src) const;

    // Where a link inside the document leads: one that begins with "#" and goes on with its own
    // words. None when it leads nowhere.
    std::optional<Units> placeOf(const QString& href) const;

private:
    class Maker;

    DocBlocks m_blocks;
    FlatText m_text;
    QString m_pictureName; // before the number of each
    std::vector<DocInline::Picture> m_pictures;
    std::vector<qsizetype> m_places; // of each of the blocks, the block of the text it begins at
    QHash<int, size_t> m_notes;      // by number, the block that is the note
    QHash<int, size_t> m_references; // by number, the block that holds the first reference
};

// A heading and what there is to say, for a document of which there is nothing to show.
FlatText documentNote(const QString& heading, const QString& words = {});

} // namespace corvelle
