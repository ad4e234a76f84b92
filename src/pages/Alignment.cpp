#include "pages/Alignment.h"

#include <QHash>

#include <algorithm>
#include <span>

namespace corvelle {

namespace {

constexpr size_t mostCells = 400'000; // of the table for the longest common subsequence
constexpr int mostEdits = 1'000;

using Elements = std::span<const int>;

void longestCommon(
    Elements old, Elements fresh, size_t oldAt, size_t freshAt, std::vector<qsizetype>& found)
{
    const size_t m = old.size(), n = fresh.size();
    std::vector<int> lengths((m + 1) * (n + 1));
    const auto at = [&](size_t i, size_t j) -> int& { return lengths[i * (n + 1) + j]; };
    for (size_t i = m; i-- > 0;)
        for (size_t j = n; j-- > 0;)
            at(i, j) =
                old[i] == fresh[j] ? at(i + 1, j + 1) + 1 : std::max(at(i + 1, j), at(i, j + 1));
    for (size_t i = 0, j = 0; i < m && j < n;) {
        if (old[i] == fresh[j]) {
            found[freshAt + j++] = static_cast<qsizetype>(oldAt + i++);
        } else if (at(i + 1, j) >= at(i, j + 1)) {
            ++i;
        } else {
            ++j;
        }
    }
}

// The greedy algorithm of Myers, "An O(ND) Difference Algorithm and Its Variations" (1986), with
// the furthest reaches of each round kept for the way back. False when it takes too many edits.
bool greedy(
    Elements old, Elements fresh, size_t oldAt, size_t freshAt, std::vector<qsizetype>& found)
{
    const auto m = static_cast<int>(old.size()), n = static_cast<int>(fresh.size());
    std::vector<std::vector<int>> rounds; // round d: x by diagonal, from -d to d
    std::vector<int> reach(2 * mostEdits + 3, 0);
    const auto x = [&](int diagonal) -> int& {
        return reach[static_cast<size_t>(diagonal + mostEdits + 1)];
    };
    int edits = 0;
    bool reached = false;
    for (; edits <= mostEdits && !reached; ++edits) {
        rounds.emplace_back(reach.begin() + (mostEdits + 1 - edits - 1),
            reach.begin() + (mostEdits + 1 + edits + 2));
        for (int k = -edits; k <= edits && !reached; k += 2) {
            const bool down = k == -edits || (k != edits && x(k - 1) < x(k + 1));
            int i = down ? x(k + 1) : x(k - 1) + 1;
            while (i < m && i - k < n &&
                   old[static_cast<size_t>(i)] == fresh[static_cast<size_t>(i - k)])
                ++i;
            x(k) = i;
            reached = i >= m && i - k >= n;
        }
    }
    if (!reached)
        return false;
    int i = m, j = n;
    for (int d = edits - 1; d >= 0 && (i > 0 || j > 0); --d) {
        const std::vector<int>& before = rounds[static_cast<size_t>(d)]; // diagonals -d-1...d+1
        const auto was = [&](int diagonal) {
            return before[static_cast<size_t>(diagonal + d + 1)];
        };
        const int k = i - j;
        const bool down = k == -d || (k != d && was(k - 1) < was(k + 1));
        const int from = d == 0 ? 0 : down ? was(k + 1) : was(k - 1) + 1;
        while (i > from && j > 0 && i - 1 >= 0 && i - j == k && i > from) {
            --i;
            --j;
            found[freshAt + static_cast<size_t>(j)] = static_cast<qsizetype>(oldAt) + i;
        }
        if (d > 0)
            (down ? j : i) -= 1;
    }
    return true;
}

} // namespace

std::vector<qsizetype> alignment(const std::vector<int>& old, const std::vector<int>& fresh)
{
    std::vector<qsizetype> found(fresh.size(), -1);
    const size_t shorter = std::min(old.size(), fresh.size());
    size_t front = 0, back = 0;
    for (; front < shorter && old[front] == fresh[front]; ++front)
        found[front] = static_cast<qsizetype>(front);
    for (; back < shorter - front && old[old.size() - 1 - back] == fresh[fresh.size() - 1 - back];
         ++back)
        found[fresh.size() - 1 - back] = static_cast<qsizetype>(old.size() - 1 - back);
    const Elements oldMiddle = Elements(old).subspan(front, old.size() - front - back);
    const Elements freshMiddle = Elements(fresh).subspan(front, fresh.size() - front - back);
    if (oldMiddle.empty() || freshMiddle.empty())
        return found;
    if (oldMiddle.size() <= mostCells / freshMiddle.size()) {
        longestCommon(oldMiddle, freshMiddle, front, front, found);
    } else if (!greedy(oldMiddle, freshMiddle, front, front, found)) {
        for (size_t i = 0; i < std::min(oldMiddle.size(), freshMiddle.size()); ++i)
            if (oldMiddle[i] == freshMiddle[i])
                found[front + i] = static_cast<qsizetype>(front + i);
    }
    return found;
}

std::vector<qsizetype> alignment(
    const std::vector<QByteArray>& old, const std::vector<QByteArray>& fresh)
{
    QHash<QByteArray, int> numbers;
    const auto numbered = [&](const std::vector<QByteArray>& texts) {
        std::vector<int> result;
        result.reserve(texts.size());
        for (const QByteArray& text : texts) {
            const auto next = static_cast<int>(numbers.size());
            const auto found = numbers.constFind(text);
            result.push_back(found == numbers.cend() ? *numbers.insert(text, next) : *found);
        }
        return result;
    };
    const std::vector<int> oldNumbers = numbered(old);
    return alignment(oldNumbers, numbered(fresh));
}

} // namespace corvelle
