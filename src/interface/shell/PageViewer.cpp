#include "interface/shell/PageViewer.h"

#include "interface/widgets/FindBar.h"
#include "library/ItemFacts.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

ItemLooks itemLooks(const Library& library)
{
    return [&library](const QString& id) {
        const Node* node = library.node(id);
        return node ? ItemLook{kindIcon(node->kind, node->isPicture()), !library.isInTrash(id)}
                    : ItemLook{Icon::Page, false};
    };
}

MentionSource mentionFacts(const Library& library)
{
    return [&library](const QString& id) { return itemFacts(library, id); };
}

} // namespace

PageViewer::PageViewer(Library& library, QWidget* window)
    : OpenedViewer(window)
    , m_library(library)
    , m_document(new OpenDocument(library, this))
    , m_sheet(new PageSheet(itemLooks(library), mentionFacts(library), window))
{
    view().pictures().setSource([this](const QString& src) {
        const auto& document = m_document->contents().document;
        return document ? document->picture(src) : QByteArray();
    });
    connect(m_document, &OpenDocument::read, this, &PageViewer::took);
    connect(m_document, &OpenDocument::unreadable, this, &OpenedViewer::unreadable);
    connect(&m_sheet->view(), &PageView::painted, this, &OpenedViewer::painted);
}

void PageViewer::close()
{
    m_document->close();
    m_sheet->closeFind();
}

ShownPage PageViewer::shownPage(const Node& node) const
{
    const OpenDocument::Contents& contents = m_document->contents();
    const bool page = viewerOf(node) == Viewer::Page;
    return {contents.text, contents.settings, page ? node.title : QString(),
        page ? node.icon : QString(), contents.document != nullptr};
}

void PageViewer::took(bool again)
{
    const Node* node = m_library.node(m_document->id());
    if (!node)
        return;
    if (!m_document->contents().readable)
        emit toastWanted({u"page"_s, Icon::Alert, u"“%1” couldn’t be read"_s.arg(node->title),
            u"What is stored of it stays as it is."_s, {}});
    if (!again || !m_sheet->isVisibleTo(m_sheet->parentWidget()))
        emit ready();
    else
        m_sheet->view().refresh(shownPage(*node));
}

void PageViewer::present()
{
    const Node* node = m_library.node(m_document->id());
    if (!node)
        return;
    m_sheet->closeFind();
    m_sheet->view().open(shownPage(*node));
}

void PageViewer::setNode(const Node& node)
{
    m_sheet->setName(kindIcon(node.kind, node.isPicture()), node.title,
        node.kind == NodeKind::File ? PageSheet::Apps::Another : PageSheet::Apps::None);
    const bool page = viewerOf(node) == Viewer::Page;
    if (page && m_sheet->isVisibleTo(m_sheet->parentWidget()) &&
        m_sheet->view().page().title != node.title) {
        ShownPage shown = m_sheet->view().page();
        shown.title = node.title;
        m_sheet->view().refresh(std::move(shown));
    }
}

bool PageViewer::followInside(const QString& address)
{
    const auto& document = m_document->contents().document;
    if (!document || !address.startsWith(u'#'))
        return false;
    if (const auto place = document->placeOf(address))
        view().showAtTop(*place);
    return true;
}

bool PageViewer::isSettled() const
{
    return !isReading() && m_sheet->view().pictures().isIdle();
}

QJsonObject PageViewer::told() const
{
    PageView& view = m_sheet->view();
    QJsonArray targets;
    for (const auto& [target, place] : m_sheet->isVisibleTo(m_sheet->parentWidget())
                                           ? view.targetsInSight()
                                           : std::vector<std::pair<TargetInPage, QRectF>>()) {
        const QPointF at = view.mapTo(m_sheet->parentWidget(), place.topLeft().toPoint());
        targets.append(QJsonObject{{u"item"_s, target.target.item}, {u"label"_s, target.label},
            {u"address"_s, target.target.link ? target.target.link->href : QString()},
            {u"place"_s, QJsonArray{at.x(), at.y(), place.width(), place.height()}}});
    }
    QJsonObject told{{u"scroll"_s, view.scrollPlace()}, {u"scrollRange"_s, view.scrollRange()},
        {u"targets"_s, targets}};
    if (m_sheet->isFinding())
        told[u"find"] = QJsonObject{{u"words"_s, m_sheet->findBar().words()},
            {u"current"_s, view.currentFound()}, {u"count"_s, view.foundCount()}};
    return told;
}

} // namespace corvelle
