#include "canvas/OpenDocument.h"

#include "documents/DocumentText.h"
#include "documents/DocxReader.h"
#include "library/LibraryPlace.h"
#include "pages/PageMarkdown.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <atomic>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr qint64 mostBytes = 64LL << 20; // of a Markdown file

struct Outcome
{
    std::optional<OpenDocument::Contents> contents;
    QString why; // the sentence, where there are none
};

QString decoded(const QByteArray& bytes)
{
    const auto mark = QStringConverter::encodingForData(bytes);
    QStringDecoder decoder(mark.value_or(QStringConverter::Utf8));
    return decoder(bytes);
}

Outcome readFile(const QString& path, const QString& title)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return {{}, u"Couldn’t read “%1”."_s.arg(title)};
    if (file.size() > mostBytes)
        return {{}, u"“%1” is too large to be shown here."_s.arg(title)};
    OpenDocument::Contents contents;
    contents.text = textFromNodes(PageMarkdown::docFromMarkdown(decoded(file.read(mostBytes))));
    return {std::move(contents), {}};
}

// A document is shown whatever becomes of it: one that can't be read says so in its place.
Outcome readDocument(const QString& path)
{
    static std::atomic<int> opened = 0;
    OpenDocument::Contents contents;
    const QString ending = path.section(u'.', -1).toLower();
    const bool word = ending.startsWith(u"do");
    auto blocks = word ? DocxReader::blocks(path) : std::optional(DocumentText::preview(path));
    if (!blocks) {
        contents.text = documentNote(u"Couldn’t read this document"_s,
            u"It may be damaged, or saved in a way this preview can’t read. Open it in its app to see it."_s);
    } else if (blocks->empty()) {
        contents.text = documentNote(u"This document has no readable content."_s);
    } else {
        contents.document =
            std::make_shared<const DocumentPage>(std::move(*blocks), QString::number(++opened));
        contents.text = contents.document->text();
    }
    return {std::move(contents), {}};
}

Outcome readPage(
    PagePreparer& preparer, const QString& database, const QString& id, const QString& title)
{
    auto page = preparer.prepare(database, id);
    if (!page)
        return {{}, u"Couldn’t read “%1”."_s.arg(title)};
    return {OpenDocument::Contents{
                std::move(page->text), page->settings, std::move(page->attrs), page->readable, {}},
        {}};
}

} // namespace

OpenDocument::OpenDocument(Library& library, QObject* parent)
    : QObject(parent)
    , m_library(library)
    , m_preparer(std::make_shared<PagePreparer>())
    , m_queue(u"corvelle.page-open"_s)
{
    connect(&library, &Library::treeChanged, this, &OpenDocument::takeTreeChange);
}

void OpenDocument::open(const QString& id)
{
    m_id = id;
    m_isThere = false;
    m_contents = {};
    start();
}

void OpenDocument::close()
{
    m_id.clear();
    m_contents = {};
    m_isThere = false;
}

void OpenDocument::start()
{
    const Node* node = m_library.node(m_id);
    if (!node)
        return;
    ++m_reading;
    const Viewer viewer = viewerOf(*node);
    m_queue.run(
        [preparer = m_preparer, viewer, id = m_id, title = node->title,
            database = databasePath(m_library.root()),
            path = node->path.isNull() ? QString() : m_library.filePath(*node)] {
            if (viewer == Viewer::Page)
                return readPage(*preparer, database, id, title);
            return viewer == Viewer::Document ? readDocument(path) : readFile(path, title);
        },
        this,
        [this, id = m_id](Outcome outcome) {
            --m_reading;
            took(id, std::move(outcome.contents), outcome.why);
        });
}

void OpenDocument::took(const QString& id, std::optional<Contents> contents, const QString& why)
{
    if (id != m_id)
        return; // another one was opened meanwhile
    if (!contents) {
        // A file that an editor is just replacing comes back; till then what was read stands.
        if (!m_isThere)
            emit unreadable(why);
        return;
    }
    m_contents = std::move(*contents);
    emit read(std::exchange(m_isThere, true));
}

void OpenDocument::takeTreeChange(const TreeChange& change)
{
    if (!m_id.isEmpty() &&
        (change.everything || change.nodes.contains(m_id) || change.changedPages.contains(m_id)))
        start();
}

} // namespace corvelle
