// Pages by the thousand, as a seed says.
#pragma once

#include "pages/PageNode.h"

#include <random>

// Where the properties begin: by chance, or with CORVELLE_SEED to see the same again.
inline unsigned seedOrRandom()
{
    return qEnvironmentVariableIsSet("CORVELLE_SEED")
               ? qEnvironmentVariable("CORVELLE_SEED").toUInt()
               : std::random_device()();
}

class RandomPages
{
public:
    // What the pages may hold: all that the stored form can, or what another form can.
    struct Can
    {
        bool damaged = false; // keys, types and values that nobody writes
        bool emptyParagraphs = true;
        bool indents = true;
        bool spans = true;          // of table cells
        bool edgeBlanks = true;     // texts and marks that begin or end in blanks
        bool neighbourLists = true; // of one type
        bool nestedQuotes = true;
        bool underlinedLinks = true;
        bool objects = true;        // pictures and embeds
        bool unknown = true;        // blocks of other kinds
        bool listOrder = true;      // items that begin with something else than a paragraph
        bool breaksAnywhere = true; // not only inside a paragraph between words
        bool codeWithMarks = true;
    };

    RandomPages(unsigned seed, const Can& can)
        : m_random(seed)
        , m_can(can)
    {}

    corvelle::PageNodes page();
    QByteArray json(); // with damage, when that may be

private:
    int below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }
    bool oneIn(int chances) { return below(chances) == 0; }

    corvelle::PageNodes blocks(int depth, bool inQuote, int most);
    corvelle::PageNode block(int depth, bool inQuote);
    corvelle::PageNode list(int depth, bool inQuote);
    corvelle::PageNode table();
    corvelle::PageNode raw();
    corvelle::PageNodes inlines(bool breaks = true);
    QString words(int most);
    QString damagedValue();

    std::mt19937 m_random;
    Can m_can;
    int m_count = 0;
};
