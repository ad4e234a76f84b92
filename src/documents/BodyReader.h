// Turns elements of a Word file's body into nodes (ECMA-376 Part 1, 17): with all changes accepted,
// and without what isn't known. One for each read of a part; one thread.
//
// Recursion follows the elements, which a tree has at most XNode::mostLevels deep.
#pragma once

#include "documents/DNode.h"
#include "documents/Package.h"
#include "documents/WordStyles.h"
#include "documents/XNode.h"

#include <QHash>

namespace corvelle {

// Whether pictures bring their bytes along. Without them nothing of a picture is inflated.
enum class Pictures { Read, Skipped };

class BodyReader
{
public:
    // What the parts of one file share.
    struct Source
    {
        ZipArchive zip;
        QString base; // the folder of the main part
        ContentTypes types;
        Styles styles;
        Numbering numbering;
        Pictures pictures = Pictures::Read;
        // By part, so that a picture shown a hundred times is read once.
        QHash<QString, DocPicture> readPictures = {};
    };

    BodyReader(Source& source, Relationships rels)
        : m_source(source)
        , m_rels(std::move(rels))
    {}

    // What an element gives, behind what is there.
    void read(XNode node, DNodes& into);
    // Behind the last element: what still waits for a paragraph to join gets one of its own.
    void finish(DNodes& into);

private:
    using Handler = void (BodyReader::*)(XNode, DNodes&);
    struct Field
    {
        enum class Kind { Begin, Hyperlink, Checkbox, Other };
        Kind kind = Kind::Begin;
        XNode begin;
        QString instr;
        QString target;       // Hyperlink
        bool checked = false; // Checkbox
        int link = -1;        // the nearest Hyperlink in the stack, itself counted; -1 for none
    };

    static const QHash<QByteArrayView, Handler>& handlers();
    void readChildren(XNode node, DNodes& into);

    void readParagraph(XNode node, DNodes& into);
    void readRun(XNode node, DNodes& into);
    void readFieldChar(XNode node, DNodes& into);
    void readInstruction(XNode node, DNodes& into);
    void readText(XNode node, DNodes& into);
    void readTab(XNode node, DNodes& into);
    void readNoBreakHyphen(XNode node, DNodes& into);
    void readSoftHyphen(XNode node, DNodes& into);
    void readSymbol(XNode node, DNodes& into);
    void readHyperlink(XNode node, DNodes& into);
    void readTable(XNode node, DNodes& into);
    void readRow(XNode node, DNodes& into);
    void readCell(XNode node, DNodes& into);
    void readFootnoteReference(XNode node, DNodes& into);
    void readEndnoteReference(XNode node, DNodes& into);
    void readBreak(XNode node, DNodes& into);
    void readBookmark(XNode node, DNodes& into);
    void readAlternate(XNode node, DNodes& into);
    void readControl(XNode node, DNodes& into);
    void readDrawing(XNode node, DNodes& into);
    void readImageData(XNode node, DNodes& into);

    // The children of a paragraph's element, behind those of deleted paragraphs before it.
    void readInto(DNode::Paragraph paragraph, XNode node, DNodes& into);
    // A paragraph or a table: behind the paragraph that it stands in, else where it is.
    void addBlock(DNode block, DNodes& into);
    void classify(Field& field);
    // The target of the link field that we are in; null for none.
    QString fieldLink() const;
    DNode::Picture picture(const QString& relationship);

    Source& m_source;
    Relationships m_rels;
    std::vector<Field> m_fields;  // open ones, the innermost last
    std::vector<XNode> m_deleted; // children of paragraphs that join the next one
    DNodes m_extra;               // blocks inside the paragraph that is being read
    bool m_isInParagraph = false;
};

} // namespace corvelle
