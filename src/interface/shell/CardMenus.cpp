#include "interface/shell/CardMenus.h"

#include <QKeySequence>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

MenuRow item(const QString& id, std::optional<Icon> icon, const QString& words,
    const QString& key = {}, bool enabled = true)
{
    MenuRow row;
    row.id = id;
    row.icon = icon;
    row.words = words;
    row.key = QKeySequence(key).toString(QKeySequence::NativeText).replace(u'+', u' ');
    row.enabled = enabled;
    return row;
}

QString named(const QString& verb, const QString& name)
{
    return name.isEmpty() ? verb : verb + u' ' + name;
}

} // namespace

std::vector<MenuRow> cardMenu(const Library& library, const std::vector<QString>& ids)
{
    std::vector<MenuRow> rows;
    const Node& first = *library.node(ids.front());
    const bool alone = ids.size() == 1;
    const bool folders = std::all_of(ids.begin(), ids.end(),
        [&](const QString& id) { return library.node(id)->kind == NodeKind::Folder; });
    if (alone) {
        rows.push_back(item(u"open"_s, Icon::Open, u"Open"_s));
        rows.back().key = u"↵"_s;
        if (library.isMissing(ids.front()) && first.isLinked())
            rows.push_back(item(u"locate"_s, Icon::Search, u"Locate…"_s));
        rows.push_back(menuLine());
        rows.push_back(item(u"rename"_s, Icon::Pencil, u"Rename"_s, u"F2"_s));
    }
    if (folders) {
        MenuRow colors;
        colors.kind = MenuRow::Kind::Colors;
        const bool same = std::all_of(ids.begin(), ids.end(),
            [&](const QString& id) { return library.node(id)->color == first.color; });
        if (same)
            colors.color = first.color;
        rows.push_back(colors);
    }
    if (alone)
        rows.push_back(item(u"icon"_s, Icon::Spark, u"Icon…"_s));
    rows.push_back(item(u"duplicate"_s, Icon::Duplicate, u"Duplicate"_s, u"Ctrl+D"_s));
    rows.push_back(
        item(u"copy"_s, Icon::Link, alone ? u"Copy link"_s : u"Copy links"_s, u"Ctrl+C"_s));
    if (alone && !first.path.isNull()) {
        rows.push_back(menuLine());
        rows.push_back(item(u"show"_s, Icon::Folder, u"Show in Finder"_s));
    }
    rows.push_back(menuLine());
    rows.push_back(item(u"trash"_s, Icon::Trash, u"Move to Trash"_s, u"Del"_s));
    rows.back().danger = true;
    return rows;
}

std::vector<MenuRow> canvasMenu(const CanvasMenuState& state)
{
    return {
        item(u"undo"_s, Icon::Undo, named(u"Undo"_s, state.undoName), u"Ctrl+Z"_s, state.canUndo),
        item(u"redo"_s, Icon::Restore, named(u"Redo"_s, state.redoName), u"Ctrl+Shift+Z"_s,
            state.canRedo),
        menuLine(),
        item(u"page"_s, Icon::Page, u"New page"_s, u"Ctrl+N"_s),
        item(u"folder"_s, Icon::Folder, u"New folder"_s, u"Ctrl+Shift+N"_s),
        item(u"link"_s, Icon::Globe, u"New link…"_s),
        item(u"files"_s, Icon::Upload, u"Add files…"_s),
        menuLine(),
        item(u"paste"_s, Icon::Copy, u"Paste"_s, u"Ctrl+V"_s, state.canPaste),
        item(u"all"_s, Icon::Fan, u"Select all"_s, u"Ctrl+A"_s),
        menuLine(),
        item(u"bin"_s, Icon::Trash, u"Open the Trash"_s),
        item(u"library"_s, Icon::Home, u"Switch Library…"_s, u"Ctrl+Shift+O"_s),
    };
}

std::vector<MenuRow> pageMenu(bool isFile)
{
    std::vector<MenuRow> rows{
        item(u"find"_s, Icon::Search, u"Find…"_s, u"Ctrl+F"_s),
        menuLine(),
        item(u"copy-md"_s, Icon::Copy, u"Copy as Markdown"_s),
        item(u"copy-html"_s, Icon::Copy, u"Copy as HTML"_s),
        menuLine(),
        item(u"export-md"_s, Icon::Download, u"Export as Markdown…"_s),
        item(u"export-html"_s, Icon::Download, u"Export as HTML…"_s),
    };
    if (isFile) {
        rows.push_back(menuLine());
        rows.push_back(item(u"elsewhere"_s, Icon::Open, u"Open in its app"_s));
        rows.push_back(item(u"show"_s, Icon::Folder, u"Show in Finder"_s));
    }
    return rows;
}

std::vector<MenuRow> pageTextMenu(bool canCopy)
{
    return {
        item(u"copy"_s, Icon::Copy, u"Copy"_s, u"Ctrl+C"_s, canCopy),
        item(u"all"_s, Icon::Text, u"Select all"_s, u"Ctrl+A"_s),
        menuLine(),
        item(u"find"_s, Icon::Search, u"Find…"_s, u"Ctrl+F"_s),
    };
}

std::vector<MenuRow> workbookMenu(bool hasSheet, bool canFind)
{
    return {
        item(u"copy"_s, Icon::Copy, u"Copy"_s, u"Ctrl+C"_s, hasSheet),
        item(u"all"_s, Icon::Text, u"Select all"_s, u"Ctrl+A"_s, hasSheet),
        menuLine(),
        item(u"find"_s, Icon::Search, u"Find…"_s, u"Ctrl+F"_s, canFind),
        menuLine(),
        item(u"elsewhere"_s, Icon::Open, u"Open in its app"_s),
        item(u"show"_s, Icon::Folder, u"Show in Finder"_s),
    };
}

} // namespace corvelle
