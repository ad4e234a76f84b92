#include "canvas/WorkbookFind.h"

#include "base/Text.h"

#include <algorithm>
#include <utility>

namespace corvelle {

namespace {

bool isBefore(CellPlace a, CellPlace b)
{
    return std::pair(a.row, a.column) < std::pair(b.row, b.column);
}

} // namespace

WorkbookFind::WorkbookFind(QString words, int sheets, BookPlace from)
    : m_words(std::move(words))
    , m_found(m_words.isEmpty() ? 0 : static_cast<size_t>(sheets))
    , m_first(std::clamp(from.sheet, 0, std::max(0, sheets - 1)))
    , m_place{m_first, from.cell}
{}

std::optional<int> WorkbookFind::nextSheet() const
{
    const int sheets = static_cast<int>(m_found.size());
    return m_searched < sheets ? std::optional((m_first + m_searched) % sheets) : std::nullopt;
}

bool WorkbookFind::isSearched(int sheet) const
{
    const int sheets = static_cast<int>(m_found.size());
    return sheet >= 0 && sheet < sheets && (sheet - m_first + sheets) % sheets < m_searched;
}

bool WorkbookFind::take(std::vector<CellPlace> found)
{
    const auto sheet = nextSheet();
    if (!sheet)
        return false;
    m_found[static_cast<size_t>(*sheet)] = std::move(found);
    ++m_searched;
    return step(0);
}

bool WorkbookFind::step(int by)
{
    m_steps += by;
    bool moved = false;
    while (m_steps != 0 && goOn()) {
        m_steps += m_steps > 0 ? -1 : 1;
        moved = true;
    }
    if (isDone())
        m_steps = 0; // nothing is found at all
    return moved;
}

void WorkbookFind::stand(BookPlace place)
{
    m_place = place;
    m_isOnHit = false;
    m_steps = 0;
}

// One step to the next hit that is known for sure to be the next.
bool WorkbookFind::goOn()
{
    const int sheets = static_cast<int>(m_found.size()), way = m_steps > 0 ? 1 : -1;
    for (int passed = 0; passed <= sheets; ++passed) {
        const int sheet = (m_place.sheet + way * passed + sheets * 2) % std::max(1, sheets);
        if (!isSearched(sheet))
            return false;
        const auto& found = foundIn(sheet);
        auto at = way > 0 ? found.begin() : found.end();
        if (passed == 0) {
            at = std::lower_bound(found.begin(), found.end(), m_place.cell, isBefore);
            if (way > 0 && m_isOnHit && at != found.end())
                ++at;
        }
        if (at == (way > 0 ? found.end() : found.begin()))
            continue;
        m_place = {sheet, way > 0 ? *at : *(at - 1)};
        m_isOnHit = true;
        return true;
    }
    return false;
}

int WorkbookFind::count() const
{
    size_t count = 0;
    for (const auto& found : m_found)
        count += found.size();
    return static_cast<int>(count);
}

std::optional<BookPlace> WorkbookFind::hit() const
{
    return m_isOnHit ? std::optional(m_place) : std::nullopt;
}

int WorkbookFind::number() const
{
    if (!m_isOnHit)
        return -1;
    const auto& found = foundIn(m_place.sheet);
    auto before =
        std::lower_bound(found.begin(), found.end(), m_place.cell, isBefore) - found.begin();
    for (int sheet = 0; sheet < m_place.sheet; ++sheet)
        before += static_cast<std::ptrdiff_t>(foundIn(sheet).size());
    return static_cast<int>(before);
}

const std::vector<CellPlace>& WorkbookFind::foundIn(int sheet) const
{
    static const std::vector<CellPlace> none;
    const bool isThere = sheet >= 0 && static_cast<size_t>(sheet) < m_found.size();
    return isThere ? m_found[static_cast<size_t>(sheet)] : none;
}

std::vector<CellPlace> findInSheet(const SheetRows& sheet, const QString& words)
{
    std::vector<CellPlace> found;
    const QString wanted = lowerCased(words);
    if (wanted.isEmpty())
        return found;
    for (size_t row = 0; row < sheet.rows.size(); ++row)
        for (size_t column = 0; column < sheet.rows[row].size(); ++column)
            if (lowerCased(sheet.rows[row][column].text).contains(wanted))
                found.push_back({static_cast<int>(column), static_cast<int>(row)});
    return found;
}

} // namespace corvelle
