// Words of a page laid out in lines of one height: drawn, asked for places and for rectangles.
//
// Places count from the start of the words' stretch; points and rectangles from the box's top left.
#pragma once

#include "interface/page/ShownText.h"

#include <QPointF>
#include <QRectF>

#include <memory>
#include <optional>
#include <vector>

class QPainter;

namespace corvelle {

// A stretch that is set off: found, the current one of those, or what the keyboard stands on.
struct TextMark
{
    enum class Kind : unsigned char { Found, Current, Focus };

    Units from = 0, to = 0;
    Kind kind = Kind::Found;
};

class TextBox
{
public:
    struct Setting
    {
        QFont font;
        double lineHeight = 25;
        double width = 680;
        Qt::Alignment alignment = Qt::AlignLeading;
        bool rightToLeft = false;
        // Light ink spreads on a dark ground unless the letters are made larger and drawn smaller.
        bool isLightInk = false;
    };

    TextBox(ShownText text, const Setting& setting);
    ~TextBox();

    double height() const { return lineCount() * m_setting.lineHeight; }
    int lineCount() const;
    bool isRightToLeft() const { return m_setting.rightToLeft; }
    const ShownText& text() const { return m_text; }
    // From the left of the box to where the line's words begin and end.
    QRectF lineRect(int line) const;
    double baseline(int line) const;

    struct Ink
    {
        QColor words;
        const Palette* colors = nullptr;
        std::optional<std::pair<Units, Units>> selection;
        const std::vector<TextMark>* marks = nullptr;
        bool struckOut = false; // the whole, with a faint line
    };
    void draw(QPainter& painter, QPointF at, const Ink& ink) const;

    Units placeAt(QPointF at) const;
    // What stands exactly there; null for none.
    const ShownText::Chip* chipAt(QPointF at) const;
    const ShownText::Address* linkAt(QPointF at) const;

    // Where a caret would stand; without width, as high as its line.
    QRectF caretAt(Units place) const;
    // Of a stretch, line by line; whole lines in their whole height.
    std::vector<QRectF> rects(Units from, Units to) const;

private:
    int lineAt(double y) const;
    std::vector<QRectF> shownRects(int from, int to) const;
    void addRects(int line, int from, int to, std::vector<QRectF>& rects) const;
    std::optional<int> characterAt(QPointF at) const;
    void drawChips(QPainter& painter, const Ink& ink, QPointF at, bool signs) const;

    ShownText m_text;
    Setting m_setting;
    std::unique_ptr<QTextLayout> m_layout; // in pixels times m_fineness
    double m_fineness = 1;
    bool m_isMixed = false; // reads in both directions
};

// Whether the first strong character is one that reads from right to left.
bool readsRightToLeft(QStringView text);

} // namespace corvelle
