#include "interface/widgets/TitleField.h"

#include "interface/theme/Theme.h"
#include "interface/widgets/Look.h"

#include <QKeyEvent>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace corvelle {

TitleField::TitleField(const QString& title, bool hasExtension, QWidget* parent)
    : QLineEdit(title, parent)
    , m_before(title)
{
    setAccessibleName(u"Title"_s);
    setFrame(false);
    setAttribute(Qt::WA_MacShowFocusRect, false);
    setTextMargins(6, 0, 6, 2);
    const qsizetype dot = title.lastIndexOf(u'.');
    if (hasExtension && dot > 0)
        setSelection(0, static_cast<int>(dot));
    else
        selectAll();
}

void TitleField::setLook(const QFont& font, const QColor& ink, const QColor& fill)
{
    setFont(font);
    const Palette& tokens = corvelle::palette(schemeOf(*this));
    QPalette colors = palette();
    colors.setColor(QPalette::Text, ink);
    colors.setColor(QPalette::Base, fill);
    colors.setColor(QPalette::Highlight, tokens.textSelection);
    colors.setColor(QPalette::HighlightedText, ink);
    setPalette(colors);
}

void TitleField::end(bool takesOver)
{
    if (std::exchange(m_hasEnded, true))
        return;
    if (takesOver && text() != m_before)
        emit committed(text());
    emit ended();
    hide();
    deleteLater();
}

void TitleField::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        end(true);
        return;
    case Qt::Key_Escape:
        end(false);
        return;
    default:
        QLineEdit::keyPressEvent(event);
        event->accept(); // what the field doesn't know must not reach the cards below it
    }
}

void TitleField::focusOutEvent(QFocusEvent* event)
{
    QLineEdit::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason) // its own menu
        end(true);
}

void TitleField::paintEvent(QPaintEvent* event)
{
    QLineEdit::paintEvent(event);
    QPainter painter(this);
    painter.fillRect(QRect(0, height() - 2, width(), 2), corvelle::palette(schemeOf(*this)).accent);
}

} // namespace corvelle
