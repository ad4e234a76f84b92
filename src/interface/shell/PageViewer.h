// Shows pages and Markdown files.
#pragma once

#include "canvas/OpenDocument.h"
#include "interface/page/PageSheet.h"
#include "interface/shell/OpenedViewer.h"

namespace corvelle {

class PageViewer : public OpenedViewer
{
    Q_OBJECT

public:
    PageViewer(Library& library, QWidget* window);

    PageSheet& sheet() { return *m_sheet; }
    PageView& view() { return m_sheet->view(); }
    const OpenDocument& document() const { return *m_document; }

    QWidget& surface() override { return *m_sheet; }
    void open(const Node& node) override { m_document->open(node.id); }
    void close() override;
    void present() override;
    void setNode(const Node& node) override;
    void comeFrom(const QRectF& card) override { m_sheet->comeFrom(card); }
    void takeFocus() override { m_sheet->takeFocus(); }
    void openFind() override { m_sheet->openFind(); }
    void setFindWords(const QString& words) override { m_sheet->setFindWords(words); }
    QRect appButton() const override { return m_sheet->appButton(); }
    bool isReading() const override { return m_document->isReading(); }
    bool isSettled() const override;
    QJsonObject told() const override;

    // Follows an address if it leads to another place of what is shown.
    bool followInside(const QString& address);

private:
    void took(bool again);
    ShownPage shownPage(const Node& node) const;

    Library& m_library;
    OpenDocument* m_document;
    PageSheet* m_sheet;
};

} // namespace corvelle
