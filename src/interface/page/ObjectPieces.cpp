// Pieces that stand for themselves: pictures and cards of items.
#include "interface/page/LaidPiece.h"

#include "interface/theme/Fonts.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr double pictureRadius = 8, noteHeight = 64, noteInCell = 36, cardHeight = 52;
constexpr qsizetype longestNote = 400;

void drawNote(
    QPainter& painter, const QRectF& box, Icon sign, const QString& words, const Palette& colors)
{
    const Lettering lettering(TypeStyle::Label);
    const QRectF square(box.left() + 16, std::round(box.center().y() - 10), 20, 20);
    drawIcon(painter, sign, square, colors.ink2);
    painter.setPen(colors.ink2);
    const double room = box.right() - square.right() - 28;
    lettering.draw(painter, QRectF(square.right() + 12, box.top(), room, box.height()),
        Qt::AlignLeft, lettering.elided(words.left(longestNote), room, Qt::ElideMiddle));
}

// Selected: under a veil, since it stands for itself.
void drawVeil(QPainter& painter, const QRectF& box, const Palette& colors)
{
    painter.setPen(QPen(colors.accent, 2));
    painter.setBrush(colors.textSelection);
    painter.drawRoundedRect(box.adjusted(1, 1, -1, -1), pictureRadius, pictureRadius);
}

class ObjectPiece : public LaidPiece
{
public:
    ObjectPiece(const PieceFacts& facts, QSizeF size)
        : m_facts(facts)
        , m_room(pieceRoom(facts))
    {
        size.setWidth(std::min(size.width(), m_room.width));
        const double left =
            facts.rightToLeft ? m_room.left + m_room.width - size.width() : m_room.left;
        m_box = QRectF(QPointF(left, facts.gap), size);
        m_height = facts.gap + size.height();
    }

    PagePlace placeAt(QPointF at) const override
    {
        return {{}, m_facts.block.start + (at.x() > m_box.center().x() ? 1 : 0)};
    }
    QRectF rectOf(const TextRange&) const override { return m_box; }
    QRectF caretAt(const PagePlace& place) const override
    {
        const bool isBehind = place.at > m_facts.block.start;
        return QRectF(isBehind ? m_box.right() : m_box.left(), m_box.top(), 0, m_box.height());
    }

protected:
    const Palette& colors() const { return m_facts.style->colors(); }

    const PieceFacts m_facts;
    const PieceRoom m_room;
    QRectF m_box;
};

class PicturePiece : public ObjectPiece
{
public:
    PicturePiece(const PieceFacts& facts, const PagePictures::Found& found)
        : ObjectPiece(facts, sizeOf(facts, found.data))
        , m_picture(found.told)
        , m_data(found.data)
    {}

    void draw(QPainter& painter, QPointF at, const Paint& paint) const override
    {
        drawQuoteBar(painter, at, m_facts, m_height);
        const QRectF box = m_box.translated(at);
        QPainterPath shape;
        shape.addRoundedRect(box, pictureRadius, pictureRadius);
        const double ratio = painter.device()->devicePixelRatioF();
        const QImage image = m_data.isShown() ? m_facts.pictures->ready(
                                                    m_data, static_cast<int>(box.width() * ratio))
                                              : QImage();
        painter.fillPath(shape, colors().sunken);
        if (!image.isNull()) {
            painter.save();
            painter.setClipPath(shape, Qt::IntersectClip);
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            painter.drawImage(box, image);
            painter.restore();
        } else if (!m_data.isShown()) {
            drawNote(painter, box, Icon::Image, note(), colors());
        }
        painter.setPen(QPen(colors().hairline, 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(box.adjusted(0.5, 0.5, -0.5, -0.5), pictureRadius, pictureRadius);
        if (selectedIn(m_facts, paint.selected))
            drawVeil(painter, box, colors());
    }

    PageTarget targetAt(QPointF at) const override
    {
        if (m_data.isShown() || m_picture.src.isEmpty() || !m_box.contains(at))
            return {};
        return {{}, std::make_shared<const Link>(Link{m_picture.src, {}})};
    }

private:
    // At a pixel for each of its own, but no wider than the column and no more than a screen high.
    static QSizeF sizeOf(const PieceFacts& facts, const PictureData& data)
    {
        constexpr double tallest = 900;
        const double room = pieceRoom(facts).width;
        if (!data.isShown())
            return {room, facts.depth > 0 ? noteInCell : noteHeight};
        const QSizeF own = QSizeF(*data.size) * facts.style->zoom();
        const QSizeF fitted = own.scaled(room, tallest, Qt::KeepAspectRatio);
        const QSizeF size = fitted.width() < own.width() ? fitted : own;
        return {std::max(8.0, std::round(size.width())), std::max(8.0, std::round(size.height()))};
    }

    QString note() const
    {
        if (!m_picture.alt.isEmpty())
            return m_picture.alt;
        return m_picture.src.isEmpty() ? u"This picture can’t be shown"_s : m_picture.src;
    }

    const PagePicture m_picture;
    const PictureData m_data;
};

class EmbedPiece : public ObjectPiece
{
public:
    EmbedPiece(const PieceFacts& facts, const PageEmbed& embed)
        : ObjectPiece(facts, QSizeF(420, cardHeight))
        , m_embed(embed)
        , m_look(*facts.items ? (*facts.items)(embed.id) : ItemLook{})
    {}

    void draw(QPainter& painter, QPointF at, const Paint& paint) const override
    {
        drawQuoteBar(painter, at, m_facts, m_height);
        const QRectF box = m_box.translated(at);
        painter.setPen(QPen(colors().hairline, 1));
        painter.setBrush(!paint.found.empty() ? colors().mark : colors().raised);
        painter.drawRoundedRect(box.adjusted(0.5, 0.5, -0.5, -0.5), pictureRadius, pictureRadius);
        if (liesIn(m_facts, paint.focus)) {
            painter.setPen(QPen(colors().accent, 2));
            painter.setBrush(Qt::NoBrush);
            painter.drawRoundedRect(
                box.adjusted(-2, -2, 2, 2), pictureRadius + 2, pictureRadius + 2);
        }
        const QString label = m_embed.label.isEmpty() ? u"Corvelle"_s : m_embed.label;
        drawNote(painter, box, m_look.sign,
            m_embed.icon.isEmpty() ? label : m_embed.icon + u' ' + label, colors());
        if (selectedIn(m_facts, paint.selected))
            drawVeil(painter, box, colors());
    }

    PageTarget targetAt(QPointF at) const override
    {
        return {m_box.contains(at) && m_look.exists ? m_embed.id : QString(), {}};
    }

private:
    const PageEmbed m_embed;
    const ItemLook m_look;
};

} // namespace

std::unique_ptr<LaidPiece> layOutPicture(const PieceFacts& facts, const BlockAttachment& picture)
{
    return std::make_unique<PicturePiece>(facts, facts.pictures->find(picture));
}

std::unique_ptr<LaidPiece> layOutEmbed(const PieceFacts& facts, const BlockAttachment& embed)
{
    return std::make_unique<EmbedPiece>(facts, embedOf(nodeFromJson(embed.node)));
}

} // namespace corvelle
