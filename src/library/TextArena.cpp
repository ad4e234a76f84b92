#include "library/TextArena.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <vector>

namespace corvelle {

namespace {

constexpr qsizetype chunkUnits = 128 * 1024;

// Where the chunks are kept to the end of the process.
char16_t* newChunk(qsizetype units)
{
    static std::mutex mutex; // two libraries may open at once in tests
    static std::vector<std::unique_ptr<char16_t[]>>& chunks = *new std::vector<std::unique_ptr<char16_t[]>>;
    const std::lock_guard lock(mutex);
    // Not cleared: pages that aren't used yet cost nothing.
    chunks.push_back(std::make_unique_for_overwrite<char16_t[]>(static_cast<size_t>(units)));
    return chunks.back().get();
}

} // namespace

char16_t* TextArena::room(qsizetype units)
{
    if (units > m_left) {
        m_left = std::max(units, chunkUnits);
        m_next = newChunk(m_left);
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
    const bool ascii = std::all_of(utf8.begin(), utf8.end(), [](char c) { return static_cast<signed char>(c) >= 0; });
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
