#include "interface/shell/CrumbBar.h"

#include "interface/theme/Fonts.h"
#include "interface/widgets/Badge.h"
#include "interface/widgets/BarButton.h"
#include "interface/widgets/Look.h"

#include <QHBoxLayout>
#include <QKeySequence>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr double widestCrumb = 200; // pixels of a title
constexpr int barHeight = 44;

// A hairline between groups, or the small sign between crumbs.
class Divider : public QWidget
{
public:
    enum class Kind { Line, Chevron };

    Divider(Kind kind, QWidget* parent)
        : QWidget(parent)
        , m_kind(kind)
    {
        setFixedSize(kind == Kind::Line ? 11 : 16, 32);
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const Palette& colors = corvelle::palette(schemeOf(*this));
        if (m_kind == Kind::Line)
            painter.fillRect(QRect(5, 6, 1, 20), colors.hairline);
        else
            drawIcon(painter, Icon::ChevronRight, QRectF(2, 10, 12, 12), colors.ink4);
    }

private:
    const Kind m_kind;
};

QString shownTitle(const QString& title)
{
    return Lettering(TypeStyle::Label).elided(title, widestCrumb, Qt::ElideMiddle);
}

} // namespace

CrumbBar::CrumbBar(CanvasModel& model, QWidget* parent)
    : GlassPanel(Fill::Glass, radius::bar, parent)
    , m_model(model)
    , m_back(new BarButton(Icon::Back, u"Back"_s, this))
    , m_forward(new BarButton(Icon::Forward, u"Forward"_s, this))
    , m_row(new QHBoxLayout(this))
{
    setAccessibleName(u"Where you are"_s);
    m_row->setContentsMargins(6, 6, 6, 6);
    m_row->setSpacing(0);
    m_row->addWidget(m_back);
    m_row->addWidget(m_forward);
    m_row->addWidget(new Divider(Divider::Kind::Line, this));
    m_back->setName(u"Back"_s, QKeySequence(u"Alt+Left"_s).toString(QKeySequence::NativeText));
    m_forward->setName(
        u"Forward"_s, QKeySequence(u"Alt+Right"_s).toString(QKeySequence::NativeText));
    connect(m_back, &QAbstractButton::clicked, this, &CrumbBar::goBack);
    connect(m_forward, &QAbstractButton::clicked, &model, &CanvasModel::goForward);
    connect(&model, &CanvasModel::folderChanged, this, &CrumbBar::rebuild);
    connect(&model.library(), &Library::treeChanged, this, [this](const TreeChange& change) {
        const auto crumbs = m_model.crumbs();
        if (change.everything || std::any_of(crumbs.begin(), crumbs.end(),
                                     [&](const QString& id) { return change.nodes.contains(id); }))
            rebuild();
    });
    rebuild();
}

void CrumbBar::setMostWidth(int pixels)
{
    if (pixels == m_mostWidth)
        return;
    m_mostWidth = pixels;
    rebuild();
}

void CrumbBar::setOverlay(const QString& name)
{
    m_overlay = name;
    rebuild();
}

void CrumbBar::setOpened(const QString& title, const QString& badge)
{
    if (title == m_opened && badge == m_openedBadge)
        return;
    m_opened = title;
    m_openedBadge = badge;
    rebuild();
}

QString CrumbBar::badge() const
{
    for (const QWidget* widget : m_crumbs)
        if (const auto* badge = qobject_cast<const Badge*>(widget); badge && badge->isVisible())
            return badge->letters();
    return {};
}

void CrumbBar::goBack()
{
    if (m_overlay.isEmpty())
        m_model.goBack();
    else
        emit overlayLeft();
}

std::optional<CrumbBar::Target> CrumbBar::targetAt(std::optional<QPoint> at)
{
    std::optional<Target> found;
    const auto test = [&](QWidget* widget, const QString& folder) {
        auto* button = qobject_cast<BarButton*>(widget);
        if (!button)
            return;
        const bool hit = at && !found && widget->geometry().contains(*at);
        if (hit) {
            const Node* node = m_model.library().node(folder);
            found = Target{folder, node ? node->title : u"Home"_s};
        }
        button->setTargeted(hit && folder != m_model.folderID());
    };
    const Node* here = m_model.library().node(m_model.folderID());
    if (here)
        test(m_back, here->parentID);
    for (QWidget* crumb : m_crumbs)
        test(crumb, crumb->property("folder").toString());
    return found;
}

void CrumbBar::rebuild()
{
    m_back->setEnabled(m_model.canGoBack() || !m_overlay.isEmpty());
    m_forward->setEnabled(m_model.canGoForward() && m_overlay.isEmpty());
    const std::vector<QString> path =
        m_overlay.isEmpty() ? m_model.crumbs() : std::vector<QString>();

    // Leave out from the top until it fits.
    // The place where one is always shows.
    const size_t least = m_opened.isEmpty() ? 1 : 0;
    for (size_t left = 0; left == 0 || left + least <= path.size(); ++left) {
        for (QWidget* crumb : m_crumbs) {
            m_row->removeWidget(crumb);
            crumb->hide();
            crumb->deleteLater();
        }
        m_crumbs.clear();
        addCrumb({}, u"Home"_s, path.empty() && m_overlay.isEmpty() && m_opened.isEmpty());
        if (left > 0)
            addEllipsis(path[left - 1], m_model.library().node(path[left - 1])->title);
        for (size_t i = left; i < path.size(); ++i)
            addCrumb(path[i], m_model.library().node(path[i])->title,
                i + 1 == path.size() && m_opened.isEmpty());
        if (!m_overlay.isEmpty())
            addCrumb(m_model.folderID(), m_overlay, true);
        else if (!m_opened.isEmpty())
            addCrumb({}, m_opened, true);
        if (m_row->sizeHint().width() <= m_mostWidth)
            break;
    }
    setFixedSize(m_row->sizeHint().width(), barHeight);
    emit resized();
}

void CrumbBar::addCrumb(const QString& id, const QString& title, bool isHere)
{
    if (!m_crumbs.empty())
        addChild(new Divider(Divider::Kind::Chevron, this));
    if (isHere && m_overlay.isEmpty() && !m_openedBadge.isEmpty()) {
        auto* badge = new Badge(m_openedBadge, this);
        badge->setContentsMargins(5, 0, 0, 0); // as far from the sign as from its name
        addChild(badge);
    }
    auto* crumb = new BarButton(shownTitle(title), this, BarButton::Form::Crumb);
    if (m_crumbs.empty()) {
        crumb->setSign(Icon::Home);
        crumb->setSignSize(18);
        if (!isHere)
            crumb->setText({});
    }
    crumb->setAccessibleName(title);
    crumb->setHere(isHere);
    crumb->setProperty("folder", id);
    connect(crumb, &QAbstractButton::clicked, &m_model, [this, id, isHere] {
        if (!m_overlay.isEmpty() && !isHere)
            emit overlayLeft();
        if (m_opened.isEmpty() || !isHere) // what is open is here already
            m_model.open(id);
    });
    addChild(crumb);
}

void CrumbBar::addChild(QWidget* child)
{
    m_row->addWidget(child);
    child->show();
    m_crumbs.push_back(child);
}

void CrumbBar::addEllipsis(const QString& target, const QString& name)
{
    addCrumb(target, u"…"_s, false);
    m_crumbs.back()->setAccessibleName(name);
}

} // namespace corvelle
