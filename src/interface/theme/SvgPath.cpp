#include "interface/theme/SvgPath.h"

#include <QtMath>

#include <cctype>
#include <charconv>
#include <cmath>

namespace corvelle {
namespace {

class Reader
{
public:
    explicit Reader(std::string_view text)
        : m_text(text)
    {}

    QPainterPath read()
    {
        while (!atEnd()) {
            if (std::isalpha(static_cast<unsigned char>(m_text.front())) != 0) {
                m_command = m_text.front();
                m_text.remove_prefix(1);
            }
            if (!step()) {
                Q_ASSERT_X(false, "svgPath", "not a path");
                break;
            }
        }
        return m_path;
    }

private:
    bool atEnd()
    {
        while (!m_text.empty() && (m_text.front() == ' ' || m_text.front() == ','))
            m_text.remove_prefix(1);
        return m_text.empty();
    }

    double number()
    {
        double value = 0;
        if (atEnd()) {
            m_broken = true;
            return 0;
        }
        const auto [end, error] =
            std::from_chars(m_text.data(), m_text.data() + m_text.size(), value);
        m_broken = m_broken || error != std::errc();
        m_text.remove_prefix(static_cast<std::size_t>(end - m_text.data()));
        return value;
    }

    QPointF point()
    {
        const double x = number();
        const double y = number();
        return isRelative() ? m_at + QPointF(x, y) : QPointF(x, y);
    }

    bool isRelative() const { return std::islower(static_cast<unsigned char>(m_command)) != 0; }

    // One command with its numbers. False when the text doesn't follow the notation.
    bool step()
    {
        QPointF
            nextControl; // reflected by a following S; the current point after anything but a curve
        bool curved = false;
        switch (std::tolower(static_cast<unsigned char>(m_command))) {
        case 'm':
            m_at = point();
            m_path.moveTo(m_at);
            m_command = isRelative() ? 'l' : 'L'; // further points of a move are lines
            break;
        case 'l':
            m_path.lineTo(m_at = point());
            break;
        case 'h':
            m_at.setX(number() + (isRelative() ? m_at.x() : 0));
            m_path.lineTo(m_at);
            break;
        case 'v':
            m_at.setY(number() + (isRelative() ? m_at.y() : 0));
            m_path.lineTo(m_at);
            break;
        case 'c':
        case 's': {
            const bool smooth = m_command == 's' || m_command == 'S';
            const QPointF first = smooth ? 2 * m_at - m_control : point();
            nextControl = point();
            const QPointF end = point();
            m_path.cubicTo(first, nextControl, end);
            m_at = end;
            curved = true;
            break;
        }
        case 'q': {
            const QPointF control = point();
            const QPointF end = point();
            m_path.quadTo(control, end);
            m_at = end;
            break;
        }
        case 'a':
            arc();
            break;
        case 'z':
            m_path.closeSubpath();
            m_at = m_path.currentPosition();
            m_command = 0; // a number can't follow
            break;
        default:
            return false;
        }
        m_control = curved ? nextControl : m_at;
        return !m_broken;
    }

    void arc()
    {
        double rx = number();
        double ry = number();
        number(); // rotation
        const bool large = number() != 0;
        const bool sweep = number() != 0;
        const QPointF from = m_at;
        m_at = point();
        if (m_broken || rx <= 0 || ry <= 0 || from == m_at)
            return;

        // From two points and the radii to the centre, in the space where the ellipse is a unit
        // circle.
        const QPointF a(from.x() / rx, from.y() / ry), b(m_at.x() / rx, m_at.y() / ry);
        const QPointF half = (b - a) / 2;
        double length = std::hypot(half.x(), half.y());
        const double grow = std::max(1.0, length); // radii too small to reach are scaled up
        length /= grow;
        const double height = std::sqrt(std::max(0.0, 1 - length * length)) / length;
        const double side = large == sweep ? -1 : 1;
        const QPointF centre = (a + b) / 2 + side * height * QPointF(-half.y(), half.x());
        rx *= grow;
        ry *= grow;
        const QPointF c = centre / grow;

        const double start = std::atan2(a.y() / grow - c.y(), a.x() / grow - c.x());
        const double end = std::atan2(b.y() / grow - c.y(), b.x() / grow - c.x());
        double turn = end - start;
        if (sweep && turn < 0)
            turn += 2 * M_PI;
        if (!sweep && turn > 0)
            turn -= 2 * M_PI;
        const QRectF box(c.x() * rx - rx, c.y() * ry - ry, 2 * rx, 2 * ry);
        m_path.arcTo(box, -qRadiansToDegrees(start), -qRadiansToDegrees(turn));
    }

    std::string_view m_text;
    QPainterPath m_path;
    QPointF m_at, m_control;
    char m_command = 0;
    bool m_broken = false;
};

} // namespace

QPainterPath svgPath(std::string_view text)
{
    return Reader(text).read();
}

} // namespace corvelle
