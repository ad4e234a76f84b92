// The scripted channel's verbs for pages.
#include "app/Application.h"
#include "app/PageExport.h"
#include "app/TestDriver.h"
#include "library/ItemFacts.h"
#include "pages/PageDocument.h"
#include "pages/PageMarkdown.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace corvelle {

void TestDriver::addPageVerbs()
{
    m_verbs[u"page"_s] = [this](const QJsonObject& a) { return page(a); };
    m_verbs[u"write"_s] = [this](const QJsonObject& a) { return write(a); };
    m_verbs[u"export"_s] = [this](const QJsonObject& a) { return exportPage(a); };
}

std::optional<QByteArray> TestDriver::storedPage(const QString& id) const
{
    std::optional<QByteArray> doc;
    (void)m_application.library().connection().each("SELECT doc FROM pages WHERE node_id = ?", {id},
        [&](const SQLRow& row) { doc = row.text(0).toUtf8(); });
    return doc;
}

TestDriver::Answer TestDriver::page(const QJsonObject& arguments)
{
    const QString id = arguments[u"id"].toString();
    const auto doc = storedPage(id);
    if (!doc)
        return {{}, u"There is no such page."_s};
    const auto stamp = m_application.pageSaves().stamp(id);
    return {QJsonObject{{u"doc"_s, QJsonDocument::fromJson(*doc).object()},
                {u"stamp"_s, stamp ? QJsonValue(*stamp) : QJsonValue()}},
        {}};
}

TestDriver::Answer TestDriver::write(const QJsonObject& arguments)
{
    const QString id = arguments[u"id"].toString();
    const auto before = storedPage(id);
    if (!before)
        return {{}, u"There is no such page."_s};
    PageNodes nodes;
    QByteArray attrs = docAttrs(*before);
    if (arguments.contains(u"markdown")) {
        nodes = PageMarkdown::docFromMarkdown(arguments[u"markdown"].toString());
    } else {
        const auto page =
            pageTree(QJsonDocument(arguments[u"doc"].toObject()).toJson(QJsonDocument::Compact));
        if (!page || !arguments[u"doc"].isObject())
            return {{}, u"A page's document is an object."_s};
        nodes = page->content;
        attrs = page->attrs;
    }
    const Library& library = m_application.library();
    const QByteArray doc = docFromText(textFromNodes(nodes), attrs,
        [&library](const QString& item) { return itemFacts(library, item); });
    const auto saved =
        m_application.pageSaves().saveNow(id, QString::fromUtf8(doc), pageWords(doc));
    if (!saved)
        return {{}, saved.failure().sentence()};
    return {QJsonObject{{u"stamp"_s, *saved}}, {}};
}

TestDriver::Answer TestDriver::exportPage(const QJsonObject& arguments)
{
    const QString id = arguments[u"id"].toString();
    const auto doc = storedPage(id);
    const auto page = doc ? pageTree(*doc) : std::nullopt;
    const QString format = arguments[u"format"].toString();
    if (!page)
        return {{}, u"There is no such page."_s};
    if (format != u"html" && format != u"md")
        return {{}, u"A page can be exported as md or html."_s};
    const Library& library = m_application.library();
    return {QString::fromUtf8(exportedPage(*page, library.node(id)->title, format,
                [&library](const QString& item) { return itemFacts(library, item); })),
        {}};
}

} // namespace corvelle
