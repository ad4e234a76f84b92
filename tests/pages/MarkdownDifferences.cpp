// Why a published example gives another document here. One that several rules explain stands under
// the first that would do.
#include "pages/MarkdownExamples.h"

#include <QStringList>

namespace corvelle {

namespace {

// "3 5-7"
QSet<int> exampleNumbers(const QString& ranges)
{
    QSet<int> all;
    for (const QString& range : ranges.split(' ', Qt::SkipEmptyParts)) {
        const QStringList ends = range.split('-');
        for (int number = ends.front().toInt(); number <= ends.back().toInt(); ++number)
            all.insert(number);
    }
    return all;
}

struct Explained
{
    const char* rule = nullptr;
    const char* sentence = nullptr;
    // By the order of exampleSources.
    const char* examples[4] = {"", "", "", ""};
};

// clang-format off
constexpr Explained explanations[] = {
    {"references",
        "A link stands with its address in one place: a definition and what refers to it "
        "are text.",
        {"23 33 194-198 200 202 204-210 212 216-220 319 529-547 551-552 555-573 575 "
            "578-579 584-591 593-595",
            "161-165 167 169 171-177 179 183-188 297 319 329 535-553 557-558 561-579 581 "
            "584-585 590-597 599-601",
            "13",
            ""}},
    {"raw-html",
        "Tags are text, but `<br>` and `<u>`; so are comments, and Markdown goes on "
        "inside of them.",
        {"21 31 148-156 158-193 203 310-311 346 477-479 496 526 615-619 625 627-633 "
            "645-646",
            "118-126 128-160 170 288-289 317 327 354 484-486 503 532 632-636 642 644 "
            "647-651 653 663-664",
            "12 22",
            "3 6 9 14 17"}},
    {"autolinks",
        "An address by itself is text, with and without `<` and `>`.",
        {"20 348 482-483 528 596-603 605-607",
            "316 356 489-490 534 602-609 611-613 621-631",
            "19 24-25",
            ""}},
    {"images",
        "A picture isn't read: what stands behind `!` is a link.",
        {"519 522 574 576-577 580-583",
            "525 528 580 582-583 586-589",
            "",
            ""}},
    {"entities",
        "An entity is text as it is written.",
        {"25-27 32 34 37-41",
            "321-323 328 330 333-337",
            "",
            ""}},
    {"item-words",
        "What stands behind a list's marker is the item's first paragraph, whatever it "
        "looks like.",
        {"61 275-276 280 294-295 300-302 320 326",
            "31 251-252 256 270-271 276-278 298 304",
            "",
            ""}},
    {"item-depth",
        "A line that is indented deeper than its list belongs to the list's last item, "
        "and a deeper marker begins a list inside it.",
        {"257 259 278 282 297 299 312-315",
            "233 235 254 258 273 275 290-293",
            "",
            ""}},
    {"lazy",
        "A quote's line begins with `>` and an item's is indented: there is no lazy "
        "continuation.",
        {"93 234-235 240 249 252-253 292",
            "63 210-211 216 225 228-229 268",
            "",
            ""}},
    {"endings",
        "What looks like a block ends a paragraph, however deep it is indented, and so "
        "does every list marker.",
        {"49 70 87 287 306 369",
            "19 40 57 263 284 376",
            "",
            ""}},
    {"fence-body",
        "Code keeps its lines as they are, but empty ones are empty; a fence is closed at "
        "any indent.",
        {"112 131-133 137",
            "82 101-103 107",
            "",
            ""}},
    {"info",
        "All that stands behind a fence is the language, as it is written.",
        {"24 143 146",
            "113 116 320",
            "",
            ""}},
    {"titles",
        "The title of a link is dropped.",
        {"22 484 507-508 511-512",
            "318 493 513-514 517-518",
            "",
            ""}},
    {"address",
        "An address is kept as it is written; any white space ends it.",
        {"491 504-506 509",
            "498 510-512 515",
            "",
            ""}},
    {"two-links",
        "A link may stand inside a link; its text keeps the inner one.",
        {"520-521",
            "526-527",
            "",
            ""}},
    {"no-label",
        "A link without a text is text.",
        {"486 489",
            "",
            "",
            ""}},
    {"lines-first",
        "Lines are joined before their words are read: a line's end is a blank in a "
        "destination, and a `\\` before it a break.",
        {"493 644",
            "500 662",
            "",
            ""}},
    {"tabs",
        "A tab is four columns wherever it stands, and neither a rule nor a bullet has "
        "one behind its marker.",
        {"2 6-7 11",
            "2 6-7 11",
            "",
            ""}},
    {"tables",
        "A separator has two hyphens in each cell; under a header that begins with a bar "
        "every line is a row, of as many cells as it has.",
        {"",
            "199 201 203-204",
            "3 6-8",
            ""}},
    {"strike",
        "Struck out is what stands between two `~` on each side, beside which more may "
        "stand.",
        {"",
            "",
            "17-18",
            "10-11"}},
    {"footnotes",
        "There are no footnotes: their marks and their words are text.",
        {"",
            "",
            "23",
            "13"}},
    {"html",
        "Not ours: reading HTML collapses blanks, also in code within a line, and drops "
        "empty headings, quotes and addresses; or nothing is published.",
        {"13 79 138 241-242 333-334 336 339 487-488 655",
            "49 108 217-218 309 341-342 344 347 495-496 673",
            "20-21",
            ""}},
};
// clang-format on

} // namespace

std::vector<MarkdownDifference> markdownDifferences()
{
    std::vector<MarkdownDifference> differences;
    for (const Explained& each : explanations) {
        MarkdownDifference difference{each.rule, each.sentence, {}};
        for (size_t i = 0; i < std::size(exampleSources); ++i)
            difference.examples[exampleSources[i]] = exampleNumbers(each.examples[i]);
        differences.push_back(std::move(difference));
    }
    return differences;
}

} // namespace corvelle
