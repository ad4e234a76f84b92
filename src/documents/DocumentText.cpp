#include "documents/DocumentText.h"

#include "base/Text.h"
#include "documents/MarkupScan.h"
#include "documents/Package.h"
#include "documents/RtfText.h"

#include <QFile>
#include <QFileInfo>
#include <QMap>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr qint64 mostPreviewBytes = 64LL << 20; // of a file, or of one part of it

// Takes paragraphs until there are enough for a preview.
class Preview
{
public:
    bool isFull() const
    {
        return m_paragraphs >= DocumentText::mostParagraphs ||
               m_characters >= DocumentText::mostCharacters;
    }
    bool hasText() const { return m_paragraphs > 0; }

    // False for one that holds nothing.
    bool add(const QString& text)
    {
        const QString trimmed =
            firstCharacters(QStringView(text).trimmed(), DocumentText::mostParagraphCharacters)
                .toString();
        if (trimmed.isEmpty())
            return false;
        m_blocks.push_back(paragraphOf(trimmed));
        ++m_paragraphs;
        m_characters += characterCount(trimmed);
        return true;
    }

    // The paragraphs of one slide, headed by its number.
    void addSlide(
        int number, QByteArrayView markup, std::initializer_list<QByteArrayView> paragraphTags)
    {
        m_blocks.push_back({DocBlock::Section{}});
        m_blocks.push_back(paragraphOf(u"Slide "_s + QString::number(number), 2));
        if (!addParagraphs(markup, paragraphTags))
            m_blocks.push_back(
                paragraphOf(u"This slide has no text. Open the original to see its artwork."_s));
    }

    // True when there was any.
    bool addParagraphs(QByteArrayView markup, std::initializer_list<QByteArrayView> tags)
    {
        bool hasAny = false;
        ElementScan paragraphs(markup, tags);
        while (!isFull()) {
            const auto inner = paragraphs.next();
            if (!inner)
                break;
            hasAny |= add(textOfMarkup(*inner));
        }
        return hasAny;
    }

    DocBlocks take()
    {
        if (m_blocks.empty())
            m_blocks.push_back(paragraphOf(u"This document has no readable text."_s));
        m_blocks.push_back({DocBlock::Aside{
            u"Text preview · Layout, artwork, and embedded media are available in the original "
            u"file. Long documents are limited for preview."_s}});
        return std::move(m_blocks);
    }

private:
    DocBlocks m_blocks;
    int m_paragraphs = 0;
    qsizetype m_characters = 0;
};

QByteArray partOf(const ZipArchive& zip, const QString& name)
{
    const auto entry = zip.entry(name);
    return entry && entry->size <= mostPreviewBytes ? zip.read(name).value_or(QByteArray())
                                                    : QByteArray();
}

// ---- decks ----

// The number in "ppt/slides/slide12.xml"; none for another part.
std::optional<qint64> slideNumber(const QString& part)
{
    constexpr QStringView before = u"ppt/slides/slide", behind = u".xml";
    if (!part.startsWith(before) || !part.endsWith(behind))
        return std::nullopt;
    const QStringView digits =
        QStringView(part)
            .sliced(before.size())
            .chopped(std::min<qsizetype>(behind.size(), part.size() - before.size()));
    const bool areDigits = !digits.isEmpty() && std::all_of(digits.begin(), digits.end(),
                                                    [](QChar c) { return c >= u'0' && c <= u'9'; });
    return areDigits ? std::optional(digits.toLongLong()) : std::nullopt;
}

QStringList slidesByNumber(const ZipArchive& zip)
{
    QStringList slides;
    for (const QString& name : zip.names())
        if (slideNumber(name))
            slides.append(name);
    std::stable_sort(slides.begin(), slides.end(), [](const QString& left, const QString& right) {
        return *slideNumber(left) < *slideNumber(right);
    });
    return slides;
}

// In the order in which they are shown; empty when the deck doesn't tell.
QStringList slidesInOrder(const ZipArchive& zip)
{
    QHash<QString, QString> targets;
    const QByteArray rels = partOf(zip, u"ppt/_rels/presentation.xml.rels"_s);
    TagScan relTags(rels, "Relationship");
    while (const auto tag = relTags.next()) {
        const QString id = attributeIn(*tag, "Id"), target = attributeIn(*tag, "Target");
        if (!id.isEmpty() && !target.isEmpty())
            targets.insert(id, target);
    }
    QStringList slides;
    const QByteArray presentation = partOf(zip, u"ppt/presentation.xml"_s);
    TagScan slideTags(presentation, "p:sldId");
    while (const auto tag = slideTags.next()) {
        const QString part = resolvedTarget(u"ppt"_s, targets.value(attributeIn(*tag, "r:id")));
        if (slideNumber(part) && zip.entry(part))
            slides.append(part);
        if (slides.size() >= DocumentText::mostSlides)
            break;
    }
    return slides;
}

void previewDeck(const ZipArchive& zip, Preview& preview)
{
    QStringList slides = slidesInOrder(zip);
    if (slides.isEmpty())
        slides = slidesByNumber(zip);
    int number = 0;
    for (const QString& slide : slides) {
        if (number == DocumentText::mostSlides || preview.isFull())
            return;
        preview.addSlide(++number, partOf(zip, slide), {"a:p"});
    }
}

// ---- the others ----

void previewOpenDocument(const ZipArchive& zip, Preview& preview)
{
    const QByteArray content = partOf(zip, u"content.xml"_s);
    ElementScan pages(content, {"draw:page"});
    int number = 0;
    while (number < DocumentText::mostSlides && !preview.isFull()) {
        const auto page = pages.next();
        if (!page)
            break;
        preview.addSlide(++number, *page, {"text:p", "text:h"});
    }
    if (number == 0)
        preview.addParagraphs(content, {"text:p", "text:h"});
}

void previewRichText(const QByteArray& bytes, Preview& preview)
{
    for (const QStringView line : QStringTokenizer(rtfText(bytes), u'\n')) {
        if (preview.isFull())
            return;
        preview.add(line.toString());
    }
}

DocBlocks previewOf(const QString& extension, const ZipArchive& zip)
{
    Preview preview;
    if (extension == u"pptx")
        previewDeck(zip, preview);
    else
        previewOpenDocument(zip, preview);
    return preview.take();
}

} // namespace

DocBlocks DocumentText::preview(const QString& path)
{
    const QString extension = QFileInfo(path).suffix().toLower();
    if (extension != u"rtf")
        return previewOf(extension, ZipArchive::ofFile(path));
    QFile file(path);
    return preview(
        extension, file.open(QIODevice::ReadOnly) ? file.read(mostPreviewBytes) : QByteArray());
}

DocBlocks DocumentText::preview(const QString& extension, const QByteArray& bytes)
{
    if (extension != u"rtf")
        return previewOf(extension, ZipArchive(bytes));
    Preview preview;
    previewRichText(bytes, preview);
    return preview.take();
}

} // namespace corvelle
