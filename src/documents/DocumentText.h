// A preview, as text, of documents that have no reader of their own: rich text, OpenDocument,
// decks. Any thread.
#pragma once

#include "documents/DocBlock.h"

namespace corvelle {

class DocumentText
{
public:
    // Never empty: what can't be read or says nothing gives a sentence. The extension decides.
    static DocBlocks preview(const QString& path);
    static DocBlocks preview(const QString& extension, const QByteArray& bytes);

    static constexpr int mostSlides = 100, mostParagraphs = 2'000;
    static constexpr qsizetype mostCharacters = 200'000, mostParagraphCharacters = 10'000;
};

} // namespace corvelle
