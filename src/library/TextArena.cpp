#include "library/TextArena.h"

#include "platform/LargeBlock.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace corvelle {

namespace {

constexpr qsizetype longestText = 4096; // bytes; a longer one has an allocation of its own
constexpr qsizetype blockUnits = largeBlockBytes / sizeof(char16_t);

// Memory that stays to the end of the process. Blocks are kept in a list, so that no leak checker
// takes them for lost.
char16_t* newBlock()
{
    static std::mutex mutex; // two libraries may open at once in tests
    static std::vector<LargeBlock>& blocks = *new std::vector<LargeBlock>;
    const std::lock_guard lock(mutex);
    blocks.push_back(newLargeBlock());
    return static_cast<char16_t*>(blocks.back().get());
}

} // namespace

char16_t* TextArena::room(qsizetype units)
{
    if (units > m_left) {
        m_left = blockUnits;
        m_next = newBlock();
    }
    char16_t* place = m_next;
    m_next += units;
    m_left -= units;
    return place;
}

QString TextArena::text(QByteArrayView utf8)
{
    if (utf8.isNull())
        return {};
    if (utf8.isEmpty())
        return QString::fromLatin1("");
    if (utf8.size() > longestText)
        return QString::fromUtf8(utf8);
    const bool ascii = std::all_of(
        utf8.begin(), utf8.end(), [](char c) { return static_cast<signed char>(c) >= 0; });
    if (ascii) {
        char16_t* place = room(utf8.size());
        std::copy(utf8.begin(), utf8.end(), place);
        return QString::fromRawData(reinterpret_cast<const QChar*>(place), utf8.size());
    }
    const QString decoded = QString::fromUtf8(utf8);
    char16_t* place = room(decoded.size());
    std::copy_n(decoded.utf16(), decoded.size(), place);
    return QString::fromRawData(reinterpret_cast<const QChar*>(place), decoded.size());
}

} // namespace corvelle
