#include "interface/sheet/CellBar.h"

#include "interface/theme/Fonts.h"
#include "interface/widgets/Look.h"

#include <QPainter>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr int leastHeight = 40, textLeft = 104, textRight = 16, room = 11;
constexpr int mostLines = 100;

std::vector<QString> linesIn(const QString& text, int width, int most)
{
    const Lettering letters(TypeStyle::SheetCell);
    QString broken = text;
    broken.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n');
    return letters.lines(broken, std::max(40, width - textLeft - textRight), most);
}

} // namespace

CellBar::CellBar(QWidget* parent)
    : QWidget(parent)
{
    setAccessibleName(u"Cell"_s);
}

void CellBar::setCell(const QString& place, const QString& text)
{
    m_place = place;
    m_text = text;
    setAccessibleDescription(place + u' ' + text);
    update();
}

void CellBar::setTaken(int pixels)
{
    if (std::exchange(m_taken, pixels) != pixels)
        update();
}

int CellBar::heightFor(int pixels, int most) const
{
    const auto lines = static_cast<int>(linesIn(m_text, pixels - m_taken, mostLines).size());
    const int line = static_cast<int>(Lettering(TypeStyle::SheetCell).lineHeight());
    return std::clamp(2 * room + lines * line, leastHeight, std::max(leastHeight, most));
}

void CellBar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const Palette& colors = corvelle::palette(schemeOf(*this));
    painter.fillRect(rect(), colors.surface);
    painter.fillRect(QRect(0, height() - 1, width(), 1), colors.hairline);
    painter.fillRect(QRect(91, 11, 1, 18), colors.hairline);
    painter.setPen(colors.ink);
    Lettering(TypeStyle::LabelStrong)
        .draw(painter, QRectF(0, 0, 91, leastHeight - 1), Qt::AlignHCenter, m_place);
    const Lettering letters(TypeStyle::SheetCell);
    const double step = letters.lineHeight();
    const int most = std::max(1, static_cast<int>((height() - 2 * room) / step));
    double top = most == 1 ? (leastHeight - 1 - step) / 2 : room;
    for (const QString& line : linesIn(m_text, width() - m_taken, most)) {
        letters.draw(painter, QRectF(textLeft, top, width() - textLeft, step), Qt::AlignLeft, line);
        top += step;
    }
}

} // namespace corvelle
