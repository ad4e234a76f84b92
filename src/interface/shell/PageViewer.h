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

    PageView& view() { return m_sheet->view(); }
    const OpenDocument& document() const { return *m_document; }

    PageSheet& surface() override { return *m_sheet; }
    void open(const Node& node) override { m_document->open(node.id); }
    void close() override;
    void present() override;
    void setNode(const Node& node) override;
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
