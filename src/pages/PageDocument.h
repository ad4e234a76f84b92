// Between the stored page and its flat text, in both directions.
//
// Blocks that the program doesn't know go through as they are, byte for byte. Pure; any thread.
#pragma once

#include "pages/FlatText.h"
#include "pages/PageNode.h"

namespace corvelle {

inline constexpr char emptyPage[] = R"({"type":"doc","content":[{"type":"paragraph"}]})";

// What a page may be told to be, from the attributes of its document.
struct PageSettings
{
    enum class Font : quint8 { Standard, Serif, Mono };

    Font font = Font::Standard;
    bool smallText = false;
    bool fullWidth = false;
    bool locked = false;
    QString cover; // "tone:" and a tone's name, or "file:" and a picture's; empty: none

    bool operator==(const PageSettings&) const = default;
};
PageSettings pageSettings(const QByteArray& attrs);
// The attributes with these settings, all others as they were.
QByteArray withSettings(const QByteArray& attrs, const PageSettings& settings);

// Tables that were made here become JSON, as they are stored, or stay as they are made: with all
// that a document says and no page stores.
enum class MadeTables { Stored, Kept };

// With `closeWithParagraph` the text ends in a plain paragraph, so that the caret can get below
// everything.
FlatText textFromNodes(
    const PageNodes& nodes, bool closeWithParagraph = true, MadeTables tables = MadeTables::Stored);
// What can't be read gives the empty page.
FlatText textFromJSON(const QByteArray& json);

PageNodes nodesFromText(const FlatText& text);
// The inline content of a stretch of one block.
PageNodes inlineNodes(const FlatText& text, Units from, Units to);

// The whole page as it is stored. `attrs` are the document's, empty for none.
QByteArray docFromText(
    const FlatText& text, const QByteArray& attrs = {}, const MentionSource& mentions = {});

// The document's own attributes as canonical JSON; empty when it has none.
QByteArray docAttrs(const QByteArray& json);

// The words of a page as plain text, its blocks and items on lines of their own.
QString allWords(const PageNodes& nodes);

// The words by which a page is found and read, at most 200,000 characters.
QString pageWords(const PageNodes& nodes);
QString pageWords(const QByteArray& json);

} // namespace corvelle
