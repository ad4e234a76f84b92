#include "interface/widgets/IconPicker.h"

#include "interface/theme/Fonts.h"
#include "interface/widgets/GlassPanel.h"
#include "interface/widgets/Look.h"
#include "interface/widgets/PushButton.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QTextBoundaryFinder>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

struct Emoji
{
    const char16_t* text;
    const char* keywords;
};

// Things that people name folders and pages after.
constexpr Emoji emoji[] = {{u"🏠", "house home flat"}, {u"🏡", "garden house home"},
    {u"🏢", "office work building"}, {u"🏫", "school study"}, {u"🏥", "hospital health"},
    {u"🏦", "bank money"}, {u"🏭", "factory industry"}, {u"🏛️", "museum court state law"},
    {u"💼", "work job business case"}, {u"📁", "folder files"}, {u"📅", "calendar date plan"},
    {u"📌", "pin important"}, {u"📎", "clip attachment"}, {u"📝", "note write draft"},
    {u"📖", "book read"}, {u"📚", "books library study"}, {u"📰", "news paper"},
    {u"🗂️", "index archive files"}, {u"🗃️", "archive box records"},
    {u"✉️", "mail letter"}, {u"📬", "mail post"}, {u"📞", "phone call"},
    {u"💬", "chat talk message"}, {u"💡", "idea light"}, {u"🔬", "science research lab"},
    {u"🔭", "astronomy research"}, {u"🧪", "chemistry experiment test"},
    {u"🧬", "biology genes"}, {u"💻", "computer code"}, {u"🖥️", "computer screen"},
    {u"⌨️", "keyboard code"}, {u"🛠️", "tools repair build"},
    {u"⚙️", "settings machine"}, {u"🔧", "repair tool"}, {u"🔒", "lock private secret"},
    {u"🔑", "key access"}, {u"💰", "money savings"}, {u"💳", "card payment bank"},
    {u"🧾", "receipt tax bill"}, {u"📈", "growth chart finance"}, {u"📊", "chart figures report"},
    {u"🛒", "shopping cart"}, {u"🎁", "gift present"}, {u"🎉", "party celebration"},
    {u"🎂", "birthday cake"}, {u"❤️", "heart love"}, {u"⭐", "star favourite"},
    {u"🔥", "fire hot urgent"}, {u"✅", "done check"}, {u"❓", "question help"},
    {u"⚠️", "warning"}, {u"🚩", "flag goal"}, {u"🎯", "target goal aim"}, {u"🏆", "prize win"},
    {u"✈️", "travel flight plane"}, {u"🚗", "car drive"}, {u"🚲", "bike cycle"},
    {u"🚆", "train travel"}, {u"⛵", "boat sail sea"}, {u"🗺️", "map travel"},
    {u"🏖️", "beach holiday"}, {u"⛰️", "mountain hike"}, {u"🏕️", "camp tent"},
    {u"🌍", "world earth"}, {u"🌱", "plant grow garden"}, {u"🌳", "tree nature"},
    {u"🌸", "flower spring"}, {u"☀️", "sun summer weather"}, {u"❄️", "snow winter"},
    {u"🌙", "moon night"}, {u"🐶", "dog pet"}, {u"🐱", "cat pet"}, {u"🐦", "bird"}, {u"🐟", "fish"},
    {u"🍎", "apple food fruit"}, {u"🍞", "bread food"}, {u"🍳", "cook kitchen"},
    {u"🍽️", "dinner food restaurant"}, {u"☕", "coffee break"}, {u"🍷", "wine drink"},
    {u"🎵", "music song"}, {u"🎸", "guitar music"}, {u"🎬", "film video"}, {u"📷", "photo camera"},
    {u"🎨", "art paint design"}, {u"✏️", "draw pencil"}, {u"🎮", "game play"},
    {u"⚽", "football sport"}, {u"🏃", "run sport"}, {u"🧘", "yoga calm"},
    {u"💊", "medicine health"}, {u"🩺", "doctor health"}, {u"👶", "baby child"}, {u"👪", "family"},
    {u"🤝", "deal contract"}, {u"⚖️", "law justice"}, {u"🗳️", "vote election"},
    {u"🕰️", "time history"}};

constexpr int perRow = 10, cell = 34, mostRows = 6;

} // namespace

QString emojiIn(const QString& text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return {};
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, trimmed);
    const QString first = trimmed.left(finder.toNextBoundary());
    const char32_t code = first.toUcs4().front();
    const bool pictographic =
        code >= 0x1F000 || (code >= 0x2190 && code <= 0x2BFF) || first.contains(QChar(0xFE0F));
    return pictographic ? first : QString();
}

std::vector<QString> emojiFor(const QString& query)
{
    const QString wanted = query.trimmed().toLower();
    std::vector<QString> found;
    for (const Emoji& each : emoji) {
        const QStringList words = QString::fromLatin1(each.keywords).split(u' ');
        if (wanted.isEmpty() || std::any_of(words.begin(), words.end(),
                                    [&](const QString& word) { return word.startsWith(wanted); }))
            found.push_back(QString::fromUtf16(each.text));
    }
    return found;
}

class IconPicker::Grid : public QWidget
{
public:
    Grid(QString current, QWidget* parent)
        : QWidget(parent)
        , m_current(std::move(current))
    {
        setMouseTracking(true);
        setAccessibleName(u"Icons"_s);
        setFixedSize(perRow * cell, mostRows * cell);
    }

    void setIcons(std::vector<QString> icons)
    {
        m_icons = std::move(icons);
        m_at = m_icons.empty() ? -1 : 0;
        m_top = 0;
        update();
    }

    QString chosen() const { return m_at < 0 ? QString() : m_icons[static_cast<size_t>(m_at)]; }

    void go(int step)
    {
        if (m_icons.empty())
            return;
        m_at = std::clamp(m_at + step, 0, static_cast<int>(m_icons.size()) - 1);
        m_top = std::clamp(m_top, m_at / perRow - mostRows + 1, m_at / perRow);
        setAccessibleDescription(chosen());
        update();
    }

    std::function<void(const QString&)> onPicked;

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const Palette& colors = corvelle::palette(schemeOf(*this));
        painter.setFont(emojiFont(20));
        for (int i = m_top * perRow; i < static_cast<int>(m_icons.size()); ++i) {
            const QRect box((i % perRow) * cell, (i / perRow - m_top) * cell, cell, cell);
            if (box.top() >= height())
                break;
            const QString& icon = m_icons[static_cast<size_t>(i)];
            if (i == m_at || icon == m_current) {
                painter.setPen(Qt::NoPen);
                painter.setBrush(i == m_at ? colors.accentSoft : colors.field);
                painter.drawRoundedRect(box.adjusted(1, 1, -1, -1), 7, 7);
            }
            painter.setPen(colors.ink);
            painter.drawText(box, Qt::AlignCenter, icon);
        }
    }

    void mouseMoveEvent(QMouseEvent* event) override
    {
        if (const int at = iconAt(event->position()); at >= 0)
            m_at = at;
        update();
    }

    void mousePressEvent(QMouseEvent* event) override
    {
        if (const int at = iconAt(event->position()); at >= 0)
            onPicked(m_icons[static_cast<size_t>(at)]);
    }

    void wheelEvent(QWheelEvent* event) override
    {
        const int rows = (static_cast<int>(m_icons.size()) + perRow - 1) / perRow;
        m_top = std::clamp(
            m_top - (event->angleDelta().y() > 0 ? 1 : -1), 0, std::max(0, rows - mostRows));
        event->accept();
        update();
    }

private:
    int iconAt(QPointF at) const
    {
        const int index =
            (static_cast<int>(at.y()) / cell + m_top) * perRow + static_cast<int>(at.x()) / cell;
        return index < static_cast<int>(m_icons.size()) ? index : -1;
    }

    const QString m_current;
    std::vector<QString> m_icons;
    int m_at = -1;
    int m_top = 0; // the first row in sight
};

IconPicker::IconPicker(const QString& current, QPoint at, QWidget& host)
    : QWidget(&host)
    , m_host(host)
    , m_panel(new GlassPanel(GlassPanel::Fill::Panel, radius::menu, this))
    , m_search(new QLineEdit(m_panel))
    , m_grid(new Grid(current, m_panel))
    , m_focusBefore(QApplication::focusWidget())
{
    setAccessibleName(u"Choose an icon"_s);
    setGeometry(host.rect());
    m_search->setPlaceholderText(u"Search, or type an emoji"_s);
    m_search->setAccessibleName(u"Search icons"_s);
    m_search->setFont(corvelle::font(TypeStyle::Label));
    m_search->setFrame(false);
    m_search->setFixedHeight(32);
    m_search->setTextMargins(8, 0, 8, 0);
    QPalette field = m_search->palette();
    field.setColor(QPalette::Base, corvelle::palette(schemeOf(host)).field);
    m_search->setPalette(field);
    auto* none =
        new PushButton(u"No icon"_s, PushButton::Role::Secondary, m_panel, PushButton::Size::Small);
    none->setEnabled(!current.isEmpty());
    auto* rows = new QVBoxLayout(m_panel);
    rows->setContentsMargins(10, 10, 10, 10);
    rows->setSpacing(8);
    rows->addWidget(m_search);
    rows->addWidget(m_grid);
    rows->addWidget(none);
    m_panel->resize(rows->sizeHint());
    m_panel->move(std::clamp(at.x(), 8, std::max(8, width() - m_panel->width() - 8)),
        std::clamp(at.y(), 8, std::max(8, height() - m_panel->height() - 8)));
    m_grid->setIcons(emojiFor({}));
    m_grid->onPicked = [this](const QString& icon) { pick(icon); };
    connect(none, &QAbstractButton::clicked, this, [this] { pick({}); });
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString& text) {
        const QString typed = emojiIn(text);
        m_grid->setIcons(typed.isNull() ? emojiFor(text) : std::vector{typed});
    });
    m_search->installEventFilter(this);
    host.installEventFilter(this);
    show();
    raise();
    m_panel->appear();
    m_search->setFocus();
}

void IconPicker::pick(const QString& icon)
{
    closePicker();
    emit picked(icon);
}

void IconPicker::closePicker()
{
    m_host.removeEventFilter(this);
    hide();
    if (m_focusBefore)
        m_focusBefore->setFocus();
    deleteLater();
}

void IconPicker::mousePressEvent(QMouseEvent*)
{
    closePicker();
}

void IconPicker::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        closePicker();
}

// The field keeps the keyboard; arrows go over the grid.
bool IconPicker::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == &m_host && event->type() == QEvent::Resize)
        closePicker();
    if (watched != m_search || event->type() != QEvent::KeyPress)
        return false;
    switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Down:
        m_grid->go(perRow);
        return true;
    case Qt::Key_Up:
        m_grid->go(-perRow);
        return true;
    case Qt::Key_Right:
        m_grid->go(1);
        return m_search->cursorPosition() == m_search->text().size();
    case Qt::Key_Left:
        m_grid->go(-1);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (const QString icon = m_grid->chosen(); !icon.isEmpty())
            pick(icon);
        return true;
    default:
        return false;
    }
}

} // namespace corvelle
