#include "interface/theme/Fonts.h"

#include "support/Printing.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

using namespace corvelle;

namespace {

const QString sentence = QStringLiteral("What to ask the landlord before signing");

QString joined(const std::vector<QString>& lines)
{
    return QStringList(lines.begin(), lines.end()).join(u'|');
}

// The columns between the first and the last that hold ink.
int inkWidth(const Lettering& lettering, double ratio, const QColor& ink)
{
    QImage image(QSize(400, 40) * ratio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setPen(ink);
        lettering.draw(painter, QPointF(10, 30), sentence);
    }
    int first = image.width(), last = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) > 30) {
                first = std::min(first, x);
                last = std::max(last, x);
            }
        }
    }
    return last - first;
}

} // namespace

TEST(Lettering, widthsGrowEvenlyWithTheScale)
{
    const double whole = Lettering(TypeStyle::CardText, 10).width(sentence) / 10;
    for (double scale = 0.7; scale < 2.8; scale += 0.03)
        EXPECT_NEAR(
            Lettering(TypeStyle::CardText, scale).width(sentence) / scale, whole, whole * 0.01)
            << scale;
}

TEST(Lettering, drawsAsWideAsItMeasuresInLightAndDarkInkAtAnyPixelRatio)
{
    for (const double scale : {0.924, 1.1, 1.37}) {
        const Lettering lettering(TypeStyle::CardText, scale);
        for (const double ratio : {1.0, 1.5, 2.0}) {
            EXPECT_NEAR(inkWidth(lettering, ratio, Qt::black) / ratio, lettering.width(sentence), 3)
                << scale << ratio;
            EXPECT_NEAR(inkWidth(lettering, ratio, Qt::white) / ratio, lettering.width(sentence), 3)
                << scale << ratio;
        }
    }
}

TEST(Lettering, endsAtTheLeftWhereItReadsFromRightToLeft)
{
    const QString text = QString(QChar(0x05D0)).repeated(5) + QChar(0x2026);
    const Lettering lettering(TypeStyle::SheetCell);
    QImage image(200, 40, QImage::Format_RGB32);
    const auto isInk = [&](int x) {
        // Above the dots of the ellipsis.
        const int base = static_cast<int>(lettering.baseline(0, image.height()));
        for (int y = 0; y < base - 3; ++y)
            if (qGray(image.pixel(x, y)) < 128)
                return true;
        return false;
    };
    for (const bool inRun : {false, true}) {
        image.fill(Qt::white);
        QPainter painter(&image);
        if (inRun)
            LetteringRun(lettering, painter, Qt::black).draw(image.rect(), Qt::AlignLeft, text);
        else
            lettering.draw(painter, image.rect(), Qt::AlignLeft, text);
        painter.end();
        const int dots = static_cast<int>(lettering.width(QChar(0x2026)));
        const int end = static_cast<int>(lettering.width(text));
        for (int x = 0; x < dots - 1; ++x)
            EXPECT_FALSE(isInk(x)) << x;
        EXPECT_TRUE(isInk(end - 3) || isInk(end - 5)) << "a letter is at the right";
    }
}

TEST(Lettering, breaksAtWordsAndCutsTheLastLine)
{
    const Lettering lettering(TypeStyle::CardTitle);
    const double width = lettering.width(QStringLiteral("What to ask the"));
    struct Case
    {
        const char* what;
        QString text;
        int most;
        QString lines;
    };
    const Case cases[] = {
        {"nothing", "", 2, ""},
        {"one line", "What to ask", 2, "What to ask"},
        {"two lines", "What to ask the landlord", 2, "What to ask the|landlord"},
        {"no lines allowed", "What to ask", 0, ""},
        {"its own line breaks", "What\nto ask", 3, "What|to ask"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(joined(lettering.lines(c.text, width, c.most)), c.lines);
    }

    const std::vector<QString> cut =
        lettering.lines(QStringLiteral("What to ask the landlord before signing it"), width, 2);
    ASSERT_EQ(cut.size(), 2U);
    EXPECT_TRUE(cut[1].startsWith(QStringLiteral("landlord"))) << qPrintable(cut[1]);
    EXPECT_TRUE(cut[1].endsWith(QChar(0x2026))) << qPrintable(cut[1]);
    EXPECT_LE(lettering.width(cut[1]), width);

    for (const QString& line : lettering.lines(QString(60, u'w'), width, 9))
        EXPECT_LE(lettering.width(line), width + 0.5) << "a word that is too long breaks anywhere";
}

TEST(Lettering, standsOnWholePixelsAndKeepsTheDistanceOfLines)
{
    for (const double scale : {0.924, 1.1, 2.75}) {
        const Lettering lettering(TypeStyle::FolderTitle, scale);
        for (const double top : {0.0, 10.3, 94.78}) {
            const double base = lettering.baseline(top);
            EXPECT_EQ(base, std::round(base));
            EXPECT_GT(base, top);
            EXPECT_LT(base, top + lettering.lineHeight());
        }
        EXPECT_NEAR(lettering.baseline(100) - lettering.baseline(0), 100, 0.01);
    }
}
