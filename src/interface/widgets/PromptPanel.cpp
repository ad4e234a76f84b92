#include "interface/widgets/PromptPanel.h"

#include "interface/theme/Fonts.h"
#include "interface/widgets/GlassPanel.h"
#include "interface/widgets/Look.h"
#include "interface/widgets/PushButton.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QVBoxLayout>

namespace corvelle {

namespace {

constexpr int promptWidth = 448;

} // namespace

PromptPanel::PromptPanel(
    const QString& title, const QString& placeholder, const QString& button, QWidget& host)
    : QWidget(&host)
    , m_host(host)
    , m_panel(new GlassPanel(GlassPanel::Fill::Panel, radius::alert, this))
    , m_field(new QLineEdit(m_panel))
    , m_focusBefore(QApplication::focusWidget())
{
    setAccessibleName(title);
    const Palette& colors = corvelle::palette(schemeOf(host));
    auto* heading = new QLabel(title, m_panel);
    heading->setFont(corvelle::font(TypeStyle::AlertTitle));
    m_field->setPlaceholderText(placeholder);
    m_field->setAccessibleName(title);
    m_field->setFont(corvelle::font(TypeStyle::Body));
    m_field->setFrame(false);
    m_field->setFixedHeight(36);
    m_field->setTextMargins(10, 0, 10, 0);
    QPalette field = m_field->palette();
    field.setColor(QPalette::Base, colors.field);
    m_field->setPalette(field);
    auto* row = new QHBoxLayout;
    auto* cancel = new PushButton(QStringLiteral("Cancel"), PushButton::Role::Secondary, m_panel);
    auto* accept = new PushButton(button, PushButton::Role::Primary, m_panel);
    row->addWidget(cancel);
    row->addStretch();
    row->addWidget(accept);
    auto* rows = new QVBoxLayout(m_panel);
    rows->setContentsMargins(24, 22, 24, 20);
    rows->setSpacing(14);
    rows->addWidget(heading);
    rows->addWidget(m_field);
    rows->addLayout(row);
    m_panel->resize(promptWidth, rows->sizeHint().height());
    connect(cancel, &QAbstractButton::clicked, this, &PromptPanel::closePanel);
    connect(accept, &QAbstractButton::clicked, this, &PromptPanel::give);
    connect(m_field, &QLineEdit::returnPressed, this, &PromptPanel::give);
    host.installEventFilter(this);
    place();
    show();
    raise();
    m_panel->appear();
    m_field->setFocus();
}

void PromptPanel::give()
{
    const QString line = m_field->text().trimmed();
    if (line.isEmpty())
        return;
    closePanel();
    emit given(line);
}

void PromptPanel::closePanel()
{
    m_host.removeEventFilter(this);
    hide();
    if (m_focusBefore)
        m_focusBefore->setFocus();
    deleteLater();
}

void PromptPanel::paintEvent(QPaintEvent*)
{
    QPainter(this).fillRect(rect(), corvelle::palette(schemeOf(*this)).dim);
}

void PromptPanel::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        closePanel();
    // All other keys end here: what they mean to the window must not happen below a question.
}

void PromptPanel::mousePressEvent(QMouseEvent*)
{
    closePanel();
}

bool PromptPanel::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == &m_host && event->type() == QEvent::Resize)
        place();
    return false;
}

void PromptPanel::place()
{
    setGeometry(m_host.rect());
    m_panel->move((width() - m_panel->width()) / 2, (height() - m_panel->height()) * 2 / 5);
}

} // namespace corvelle
