#include "interface/shell/ToolBar.h"

#include "interface/widgets/BarButton.h"

#include <QHBoxLayout>

using namespace Qt::StringLiterals;

namespace corvelle {

ToolBar::ToolBar(QWidget* parent)
    : GlassPanel(Fill::Glass, radius::bar, parent)
{
    setAccessibleName(u"Tools"_s);
    auto* trash = new BarButton(Icon::Trash, u"Trash"_s, this);
    connect(trash, &QAbstractButton::clicked, this, &ToolBar::trashWanted);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(6, 6, 6, 6);
    row->setSpacing(0);
    row->addWidget(trash);
    setFixedSize(row->sizeHint());
}

} // namespace corvelle
