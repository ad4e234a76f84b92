// The drawn face of a card: what it shows as a value, and the pictures made of it.
//
// Sizes in a face are canvas points, sizes on screen logical pixels; `scale` is the pixels of one
// point. Everything here runs on any thread while a QGuiApplication exists.
#pragma once

#include "base/NodeKind.h"
#include "interface/theme/Theme.h"

#include <QImage>
#include <QSizeF>
#include <QString>

#include <vector>

class QPainter;

namespace corvelle {

struct CardFace
{
    enum class Kind : unsigned char { Folder, Page, File, Picture, Link };

    // What looks out of a folder.
    struct Peek
    {
        enum class Kind : unsigned char { Page, Todo, Picture, File, Link, Folder };

        Kind kind = Kind::Page;
        NodeColor color = NodeColor::Gray; // of a folder
        QImage picture;                    // of a picture, a file's first page, a site

        bool operator==(const Peek&) const = default;
    };

    // A block of a page.
    struct Line
    {
        enum class Kind : unsigned char { Text, Heading, Bullet, Number, Todo, Done, Quote, Code };

        Kind kind = Kind::Text;
        QString text;
        int number = 1;

        bool operator==(const Line&) const = default;
    };

    Kind kind = Kind::File;
    QSizeF size;
    QString title;
    bool missing = false; // what it stands for can't be found

    NodeColor color = NodeColor::Gray; // of a folder, of a site's mark
    int count = 0;                     // of a folder's children
    std::vector<Peek> peeks;           // the first three are shown

    std::vector<Line> lines; // of a page; of a text file's sheet

    QString badge;  // "PDF"
    QString meta;   // "12 pages"
    QString length; // of a video, in the corner of its picture
    QImage
        picture; // the picture itself, a file's first page, a site as it looks; null: a plain face
    std::vector<QImage> more; // a deck's further slides; what lies in an archive

    QString host; // of a link

    bool operator==(const CardFace&) const = default;
};

// The face with its shadow, and around it a transparent margin on every side. The card has whole
// device pixels: its size times scale and ratio, rounded.
QImage drawCardFace(const CardFace& face, Scheme scheme, double scale, double devicePixelRatio);

// The margin of such a picture, in logical pixels (whole ones). It only depends on the scale.
int faceMargin(double scale);

// What stands in for a face that isn't drawn yet: the surface with its hairline, or the folder in
// its colour. Takes microseconds.
void plainCard(QPainter& painter, const QRectF& card, CardFace::Kind kind, NodeColor color,
    double scale, const Palette& colors);

enum class Ring : unsigned char {
    Selected, // also for targets
    Focused,  // dashed
};

// Painted over a card on screen, outside of it; a folder's ring follows its silhouette.
void paintRing(QPainter& painter, const QRectF& card, CardFace::Kind kind, double scale,
    const Palette& colors, Ring ring);
// How far a ring reaches beyond the card.
inline constexpr double ringReach = 5;

// The pointer is over the card: what is painted below its face, and above it. Nothing but the lift
// when seen from far.
void paintHoverLift(QPainter& painter, const QRectF& card, CardFace::Kind kind, double scale,
    const Palette& colors);
void paintHover(QPainter& painter, const QRectF& card, CardFace::Kind kind, double scale,
    const Palette& colors);
// The button that opens the card's menu.
QRectF moreButton(const QRectF& card, CardFace::Kind kind, double scale);
void paintMoreButton(QPainter& painter, const QRectF& card, CardFace::Kind kind, NodeColor color,
    double scale, const Palette& colors);

// The radius of the card's corners on screen.
double cornerRadius(CardFace::Kind kind, double scale);

} // namespace corvelle
