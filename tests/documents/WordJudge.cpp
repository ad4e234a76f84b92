#include "documents/WordJudge.h"

#include "documents/DocxReader.h"
#include "documents/Overloaded.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

WordCounts countWords(const QString& text)
{
    static const QRegularExpression word(u"\\w+"_s, QRegularExpression::UseUnicodePropertiesOption);
    WordCounts counts;
    const QString normal = text.normalized(QString::NormalizationForm_KC).toLower();
    for (auto found = word.globalMatch(normal); found.hasNext();)
        ++counts[found.next().captured()];
    return counts;
}

bool hasWords(QStringView text)
{
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c.isLetterOrNumber(); });
}

// ---- the judge's tree ----

class JudgedTree
{
public:
    DocumentFacts read(const QJsonObject& document)
    {
        // Titles and authors are apart in it.
        const QJsonObject meta = document["meta"].toObject();
        for (const QJsonValue& value : meta) {
            walk(value);
            m_text += u'\n';
        }
        walk(document["blocks"]);
        m_facts.words = countWords(m_text);
        return m_facts;
    }

private:
    void walk(const QJsonValue& value)
    {
        for (const QJsonValue& each : value.toArray())
            walk(each);
        if (value.isObject())
            walkNode(value.toObject());
    }

    void walkNode(const QJsonObject& node)
    {
        const QString type = node["t"].toString();
        const QJsonValue content = node["c"];
        static const QStringList blocks = {u"Para"_s, u"Plain"_s, u"Header"_s};
        static const QStringList blanks = {u"Space"_s, u"SoftBreak"_s, u"LineBreak"_s};
        if (type == u"Math" || type == u"Image") {
            return;
        } else if (type == u"Str") {
            m_text += content.toString();
        } else if (type == u"Code") {
            m_text += content[1].toString();
        } else if (blanks.contains(type)) {
            m_text += u' ';
        } else if (type == u"Note") {
            ++m_facts.notes;
            m_text += u' ';
            walk(content);
            m_text += u' ';
        } else if (type == u"Table") {
            walkTable(content.toArray());
        } else {
            const qsizetype before = m_text.size();
            if (type == u"BulletList")
                m_facts.items += int(content.toArray().size());
            if (type == u"OrderedList")
                m_facts.items += int(content[1].toArray().size());
            walk(content);
            m_facts.headings += type == u"Header" && isHeadingToUs(content) &&
                                hasWords(QStringView(m_text).sliced(before));
            if (blocks.contains(type))
                m_text += u'\n';
        }
    }

    // [level, attributes, words], where the classes among the attributes name a style that is made
    // from a heading's.
    bool isHeadingToUs(const QJsonValue& header) const
    {
        return header[0].toInt() <= 6 && header[1][1].toArray().isEmpty();
    }

    // [attributes, caption, columns, head, bodies, foot]; a row is [attributes, cells], a cell
    // [attributes, alignment, row span, column span, blocks].
    void walkTable(const QJsonArray& table)
    {
        walk(table[1]);
        walkRows(table[3][1].toArray());
        for (const QJsonValue& body : table[4].toArray()) {
            walkRows(body[2].toArray());
            walkRows(body[3].toArray());
        }
        walkRows(table[5][1].toArray());
    }

    void walkRows(const QJsonArray& rows)
    {
        for (const QJsonValue& row : rows)
            for (const QJsonValue& cell : row[1].toArray()) {
                const qsizetype before = m_text.size();
                walk(cell[4]);
                m_facts.cells += hasWords(QStringView(m_text).sliced(before));
                m_text += u'\n';
            }
    }

    DocumentFacts m_facts;
    QString m_text;
};

// ---- ours ----

class OurBlocks
{
public:
    DocumentFacts read(const DocBlocks& blocks)
    {
        walk(blocks);
        m_facts.words = countWords(m_text);
        return m_facts;
    }

private:
    void walk(const DocBlocks& blocks)
    {
        for (const DocBlock& block : blocks)
            std::visit(Overloaded{[&](const DocBlock::Paragraph& paragraph) {
                                      m_facts.headings +=
                                          paragraph.level > 0 && hasWords(plainText(block));
                                      add(paragraph.inlines);
                                  },
                           [&](const DocBlock::Item& item) {
                               ++(isNote(item) ? m_facts.notes : m_facts.items);
                               add(item.inlines);
                           },
                           [&](const DocBlock::Table& table) { add(table); },
                           [&](const auto&) { m_text += plainText(block) + u'\n'; }},
                block.value);
    }

    void add(const DocBlock::Table& table)
    {
        for (const DocRow& row : table.rows)
            for (const DocCell& cell : row.cells) {
                const qsizetype before = m_text.size();
                walk(cell.blocks);
                m_facts.cells += hasWords(QStringView(m_text).sliced(before));
            }
    }

    void add(const DocInlines& inlines)
    {
        static const QRegularExpression numbers(u"^(?:\\[[0-9]+\\])+$"_s);
        DocInlines words;
        for (const DocInline& each : inlines) {
            const auto* text = std::get_if<DocInline::Text>(&each.value);
            if (text && text->marks.sup && numbers.match(text->text).hasMatch())
                words.push_back({DocInline::LineBreak{}});
            else
                words.push_back(each);
        }
        m_text += plainText(words) + u'\n';
    }

    // It ends in what leads back.
    static bool isNote(const DocBlock::Item& item)
    {
        const auto* last = item.inlines.empty()
                               ? nullptr
                               : std::get_if<DocInline::Text>(&item.inlines.back().value);
        return last && last->marks.link == u"#";
    }

    DocumentFacts m_facts;
    QString m_text;
};

} // namespace

std::optional<DocumentFacts> judgedFacts(const QString& path)
{
    QProcess judge;
    judge.start(u"pandoc"_s, {u"--from=docx"_s, u"--to=json"_s, path});
    if (!judge.waitForFinished() || judge.exitStatus() != QProcess::NormalExit ||
        judge.exitCode() != 0)
        return std::nullopt;
    return JudgedTree().read(QJsonDocument::fromJson(judge.readAllStandardOutput()).object());
}

std::optional<DocumentFacts> ourFacts(const QString& path)
{
    const auto blocks = DocxReader::blocks(path, Pictures::Skipped);
    return blocks ? std::optional(OurBlocks().read(*blocks)) : std::nullopt;
}

double agreement(const WordCounts& ours, const WordCounts& theirs)
{
    int total = 0, common = 0;
    for (auto word = ours.cbegin(); word != ours.cend(); ++word) {
        total += *word;
        common += std::min(*word, theirs.value(word.key()));
    }
    for (const int count : theirs)
        total += count;
    return total == 0 ? 1 : 2.0 * common / total;
}

} // namespace corvelle
